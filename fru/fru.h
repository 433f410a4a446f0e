// One FRU device image: the common header and the five areas, read from a device or a FRU file, changed in
// memory, written back area by area and verified.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "app/services/prepared_text.h"
#include "firmware/status.h"
#include "fru/board_info_area.h"
#include "fru/chassis_info_area.h"
#include "fru/file_header.h"
#include "fru/fru_device_address.h"
#include "fru/fru_header.h"
#include "fru/internal_use_area.h"
#include "fru/multi_record.h"
#include "fru/product_info_area.h"

namespace varnok {

class FruOutput;

class CFru {
 public:
  // --- Parts ---

  CFruHeader& Header() { return header_; }
  const CFruHeader& Header() const { return header_; }
  FruWriteMode HeaderWriteMode() const { return headerWriteMode_; }
  void SetHeaderWriteMode(FruWriteMode mode) { headerWriteMode_ = mode; }
  CInternalUseArea& InternalUse() { return internalUse_; }
  CChassisInfoArea& Chassis() { return chassis_; }
  CBoardInfoArea& Board() { return board_; }
  CProductInfoArea& Product() { return product_; }
  /// The chassis, board or product area; null for any other.
  InfoArea* FindInfoArea(FruAreaId area);
  MultiRecordList& MultiRecords() { return multiRecords_; }
  /// Of the whole multi-record area, in bytes.
  std::uint32_t MultiRecLength() const { return multiRecLength_; }
  bool IsMultiRecModified() const { return isMultiRecModified_; }
  FruDeviceAddress& Address() { return address_; }
  const FruDeviceAddress& Address() const { return address_; }
  const CFileHeader& FileHeader() const { return fileHeader_; }
  /// Set for good when a device read finds an invalid area.
  bool IsImageInvalid() const { return isImageInvalid_; }

  /// True when the header gives the area an offset; always for the common header.
  bool HasArea(FruAreaId area) const;
  bool HasInternalArea() const;
  bool HasChassisArea() const;
  bool HasBoardArea() const;
  bool HasProductArea() const;
  bool HasMultiRecArea() const;

  // --- Bytes ---

  /// Takes the bytes; kHeaderChecksum when they do not sum to 0.
  Status DecodeHeader(std::span<const std::uint8_t, CFruHeader::kLength> bytes);
  /// The two's complement of the 8-bit sum, 0 for no bytes.
  static std::uint8_t CalculateChecksum(std::span<const std::uint8_t> bytes);
  /// Writes the 8 header bytes; kUnexpected without a buffer.
  Status SerializeCommonHeader(std::uint8_t* output) const;
  /// Appends the records in `bytes` (kAllMultiRecords; the end-of-list bit is not consulted), or replaces the
  /// header of record `number`, counted from 0. kMultiRecordMemory, or kMultiRecordArea when there is no such
  /// record or a record reaches past the bytes. One to four bytes at the end make a header with zeros for the
  /// rest, and zeros for its data.
  Status DecodeMultiRecArea(std::span<const std::uint8_t> bytes, std::uint32_t number);
  /// DecodeMultiRecArea on a fresh list (kAllMultiRecords) or on the present one; sets the area's length.
  Status SetMultiRecArea(std::span<const std::uint8_t> bytes, bool isModified, std::uint32_t number);
  /// Writes all records, or record `number` counted from 1. `size` is the room on entry and the bytes written
  /// on return; kUnexpected when the room does not suffice. A missing record writes nothing.
  Status SerializeMultiRecArea(std::uint8_t* output, std::uint32_t& size, std::uint32_t number) const;
  /// True when both checksums of the record hold.
  static bool IsValid(const MultiRecord& record);
  /// True when both checksums of every record hold.
  bool CheckMultiRecCheckSum() const;
  /// Derives the lengths of the areas from the header's offsets, the last area reaching the end of `total`
  /// bytes.
  void ComputeAreaLengths(std::uint32_t total);
  /// Resizes an info area to `length` bytes and moves the areas behind it in the header. kUnsupported, the
  /// status of asking for the device's size, kFieldsTooBig (nothing changed) or kAreasTooBig (the area keeps
  /// its new length).
  Status ResizeFruArea(FruAreaId area, std::uint32_t length);
  /// True for an image whose first area in mode Skip has a good checksum: what a script's VALIDATE asks.
  bool IsSkippedAreaValid();
  /// kNoSuchItem for an area that is none, kMultiRecordArea for a record (counted from 1) that is missing.
  Status SetAreaWriteMode(FruAreaId area, FruWriteMode mode, std::uint32_t recordNumber);
  /// The name by which messages call a FRU: its display name or its address, cut to the buffer. An empty text
  /// without a record and for a buffer of less than 100 bytes.
  static std::u16string_view GetFriendlyFruIdentifier(const FruDeviceAddress* address,
                                                      std::span<char16_t> buffer);

  // --- FRU file ---

  /// Fills a fresh image from a FRU file. kFileNotRead or kFileNotParsed, with the last error set.
  Status ReadFRUFromFile(std::string_view fileName);
  /// Collects the bytes of the area block that line `index` opens, in a shared buffer that is valid until the
  /// next call. kBlockTagMissing, kBlockTooBig or kBlockCharacter.
  static Status ParseArea(std::string_view tag, PreparedText& lines, std::size_t index,
                          std::span<const std::uint8_t>& bytes);
  /// Turns a status of ParseArea into the last error; 0 sets nothing.
  static void SetParseAreaErrorMessage(Status status, const char* areaName, std::string_view fileName);

  // --- Device ---

  /// Takes over the address and its display name and reads the device.
  Status LoadFromSystem(const FruDeviceAddress& address);
  /// Reads `buffer.size()` bytes at `offset`. kReadFailed, or the transport's result as a status.
  static Status ReadDataFromFRU(const FruDeviceAddress& address, std::uint32_t offset,
                                std::span<std::uint8_t> buffer);
  /// The same in chunks of at most 8 bytes; `count` tells how many bytes were delivered.
  static Status ReadFruDataFromBmc(const FruDeviceAddress& address, std::uint32_t offset,
                                   std::span<std::uint8_t> buffer, std::size_t& count);
  /// The device's inventory area size in bytes. kReadFailed for storage other than an IMBDEVICE.
  static Status ReadFruDataFromBmc(const FruDeviceAddress& address, std::uint32_t& inventorySize);
  static Status WriteFruDataToBmc(const FruDeviceAddress& address, std::uint32_t offset,
                                  std::span<const std::uint8_t> bytes);
  /// Writes every area in mode WriteAndVerify, then verifies. kOutputFile, kAreaNotWritten or the
  /// verification's status.
  Status WriteToSystem();
  /// Shows the image on the console. kUnexpected for an image without the field data that its header
  /// promises.
  Status Display();

 private:
  Status ReadFruFromSystem();
  Status GetCommonHeader();
  Status GetBoardArea();
  Status GetProductArea();
  Status GetChassisArea();
  struct InfoAreaReading;
  Status GetInfoArea(const InfoAreaReading& reading);
  /// Cuts `bytes` to the area's length.
  Status ReadInfoArea(FruAreaId area, std::span<std::uint8_t>& bytes);
  Status GetInternalUseArea();
  Status GetMultiRecArea();
  Status ReadMultiRecord(std::uint32_t& position, bool& isLast, bool& isSound);

  /// An area as a writer and a verifier see it.
  struct AreaImage {
    FruWriteMode mode;
    std::size_t length;                   ///< the room that it takes on the device
    std::span<const std::uint8_t> bytes;  ///< none for the multi-record area
  };
  AreaImage ImageOf(FruAreaId area);

  Status WriteFruData(FruOutput& output, std::uint32_t offset, std::span<const std::uint8_t> bytes);
  Status WriteAreas(FruOutput& output, bool& isAnyWritten);
  Status WriteArea(FruOutput& output, FruAreaId area, std::uint32_t offset,
                   std::span<const std::uint8_t> bytes);
  Status WriteMultiRecArea(FruOutput& output, std::uint32_t offset);
  /// Takes what reading the device that `image` was written to will need. False when there is not enough
  /// memory.
  bool ReserveFor(CFru& image);
  /// Reads the device into `device`, which is reserved for this image, and compares.
  Status Verify(FruOutput& output, CFru& device);
  /// Tells the operator of areas that pass although they read back otherwise.
  void WarnOfUncompared(CFru& device);
  bool VerifyMultiRecArea(FruOutput& output, const CFru& device, bool& isAnnounced) const;

  FruWriteMode headerWriteMode_ = FruWriteMode::WriteAndVerify;
  CFruHeader header_;
  MultiRecordList multiRecords_;
  std::uint32_t multiRecLength_ = 0;
  bool isMultiRecModified_ = false;
  FruDeviceAddress address_;
  CFileHeader fileHeader_;
  bool isImageInvalid_ = false;
  CInternalUseArea internalUse_;
  CChassisInfoArea chassis_;
  CBoardInfoArea board_;
  CProductInfoArea product_;

  friend class FruFileReader;
};

/// The name by which a message calls a FRU, in room of its own.
class FruName {
 public:
  explicit FruName(const FruDeviceAddress& address)
      : text_(CFru::GetFriendlyFruIdentifier(&address, room_)) {}
  FruName(const FruName&) = delete;
  FruName& operator=(const FruName&) = delete;
  std::u16string_view Text() const { return text_; }

 private:
  std::array<char16_t, 512> room_;
  std::u16string_view text_;
};

}  // namespace varnok

// The FRU manager: the one front through which the program reads, shows, changes and programs FRU devices. It
// keeps the images read from devices and from FRU files, and a selection (list, FRU, area, field, record) on
// which the operations work.
//
// Every operation that returns a status first checks that the manager is initialised (kNotInitialized), those
// that need an image that one was loaded (kNoListLoaded), and then the selection (kNothingSelected;
// kNoSuchItem when the selected FRU does not exist). A failure sets the last-error text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "app/services/callbacks.h"
#include "firmware/status.h"
#include "fru/fru_device_address.h"
#include "fru/fru_status.h"
#include "fru/fru_types.h"

namespace varnok::FruData {

// --- Start ---

/// Starts with empty lists, no selection, no output file and no last error. kInitializeFailed without memory.
Status Initialize();
Status SetProgressCallback(ProgressCallback callback);
Status SetDisplayHexCallback(DisplayHexCallback callback);
/// Names the file to which a commit appends what it prints and writes; an empty name ends that.
/// kMultiRecordMemory without memory.
Status SetOutputFile(std::string_view fileName);
/// With the flag set the display stops after each area.
Status SetPagingMode(bool on);

// --- Last error ---

/// Keeps at most 511 characters of `text`.
void SetLastError(std::u16string_view text);
/// The text of the last failure, null when there was none; given before the start too, with kNotInitialized.
Status GetLastErrorMessage(const char16_t*& text);

// --- Images ---

/// Reads the FRU device at `address`, whose title does not count, and appends the image to the system list,
/// whether or not the read succeeded. Gives the read's status; `isImageInvalid` is set when the read found an
/// invalid area. kMultiRecordMemory when there is no memory for an image, which is then not appended. The
/// selection does not change.
Status LoadFruAtAddress(const FruDeviceAddress& address, bool& isImageInvalid);
/// Reads and checks only the common header: the read's status, kNotIpmiFru or kInvalidHeader. Needs no image.
Status FindFruAtAddressAndChecksumHeader(const FruDeviceAddress& address);
/// Reads a FRU file, appends its image to the file list and selects that list and that FRU. kOutOfMemory,
/// kFileNotRead or kFileNotParsed.
Status LoadConfigurationFromFile(std::string_view fileName);
/// Writes and verifies the selected FRU when the system list is selected or `force` is set; else does
/// nothing. kWriteFailed when that fails.
Status CommitConfigurationToSystem(bool force);
/// Copies one area of the file image with this address into the system image with the same address. Leaves
/// the system list and that FRU selected. kUnexpected for FruAreaId::None, kNoListLoaded when either image is
/// missing.
Status CopyAreaFromFile(const FruDeviceAddress& address, FruAreaId area);

// --- Selection ---

/// Selects a list and clears FRU, area and field. kNoSuchItem for any value but System and File.
Status SelectList(FruList list);
/// Clears the selection within the list (FRU, area, field, record) and selects the list's first FRU at
/// `address`.
Status SelectFruByAddress(const FruDeviceAddress& address);
/// The address of the selected FRU; on failure NVS type 3 and zeros.
Status GetFruAddress(FruDeviceAddress& address);
/// Clears area and field. An area that the FRU does not have is left unselected, and the result is 0.
Status SelectAreaEnum(FruAreaId area);
Status HasInternalUseArea(bool& isPresent);
Status HasChassisArea(bool& isPresent);
Status HasBoardArea(bool& isPresent);
Status HasProductArea(bool& isPresent);
Status HasMultiRecordArea(bool& isPresent);
/// kUnsupported for the common header and the multi-record area, kNoSuchItem when the area has no such field.
Status SelectFieldEnum(FruFieldId field);
Status SelectFieldInteger(std::uint32_t index);
/// Selects record `number`, counted from 1, of the selected multi-record area. kUnexpected when it is
/// missing.
Status SelectMultiRecNum(std::uint32_t number);

// --- Fields of the chassis, board and product areas ---

/// A view of the selected field's bytes, valid until the image changes.
Status GetFieldDataValue(const std::uint8_t*& data, std::uint32_t& length);
/// Sets the selected field as 8-bit text.
Status SetFieldDataValue(const std::uint8_t* data, std::uint32_t length);
/// The free bytes of the selected area; 0 for the common header.
Status GetMaxFieldSize(std::uint32_t& size);

// --- Areas ---

/// Resizes the selected chassis, board or product area to `length` bytes, a multiple of 8, and moves the
/// areas behind it.
Status ResizeFruArea(std::uint32_t length);
/// The selected area's bytes: common header, internal use area, or the selected record(s) of the multi-record
/// area. `size` is the room in `buffer` on entry and the bytes stored on return.
Status GetAreaData(std::uint8_t* buffer, std::uint32_t& size);
/// Replaces the internal use area (same length) or the selected record(s).
Status SetAreaData(const std::uint8_t* bytes, std::uint32_t length);
Status GetAreaSize(std::uint32_t& size);
/// What a commit does with the selected area, or with the selected record.
Status SetAreaWriteMode(FruWriteMode mode);
/// Checks the checksum of the selected FRU's first area in mode Skip (the common header, chassis, board,
/// product or the records). kNoListLoaded when it does not hold.
Status ValidateSelectedArea();

// --- Command line ---

/// Reads a device address from the arguments behind "/d fru", of which the first names the storage kind, into
/// the record that DisplaySelectedFru uses. `count` is then the argument count less the switches found.
/// kBadAddressArguments when they give no address.
Status ParseFruAddress(int argumentCount, const char* const arguments[], int& count);
/// Reads and shows the FRU device at the command line's address, the BMC's own without one. kDeviceNotFound
/// when it cannot be read.
Status DisplaySelectedFru();

}  // namespace varnok::FruData

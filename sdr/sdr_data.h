// The front of the SDR subsystem: shows the BMC's SDR repository, loads an SDR file, writes the records that
// the script's tags select, reads the repository back and compares.
//
//   SdrData::Initialize(); SdrData::SetProgressCallback(...); SdrData::SetDisplayHexCallback(...);
//   SdrData::DisplaySdrArea();                                                            // show
//   SdrData::LoadConfigurationFromFile(u"BOARD.SDR"); SdrData::CommitConfigurationToSystem();  // program
//
// Two data sets are kept, one of the BMC and one of the file; one of them is the current set. Every status
// that is not 0 is one of sdr_status, or a platform's. Where nothing else is said, an operation returns
// kNotInitialized before Initialize and after DeInitialize.
#pragma once

#include <string_view>

#include "app/services/callbacks.h"
#include "firmware/status.h"
#include "sdr/sdr_status.h"

namespace varnok::SdrData {

/// Creates both data sets, after releasing earlier ones; the file set becomes the current one. kNoDataSet
/// without memory.
Status Initialize();
/// Releases both data sets and the output file's name.
Status DeInitialize();

/// Whether the current set has been loaded.
Status IsLoaded(bool& isLoaded);
Status SetProgressCallback(ProgressCallback callback);
Status SetDisplayHexCallback(DisplayHexCallback callback);
/// The text of the last failure, valid until the next operation; empty when it has none. `text` is null when
/// the status is not 0.
Status GetLastErrorMessage(const char16_t*& text);

Status SelectSysData();
Status SelectFileData();

/// Names the file that displays and commits append their output to; an empty name ends that. kOutOfMemory.
/// Works before Initialize.
Status SetOutputFile(std::string_view name);
/// Asks for a key after every third record of a display. Works before Initialize.
Status SetPaging(bool on);
/// Makes commits compare only: nothing is cleared or written.
Status SetCompareOnly(bool on);

/// Empties the BMC's repository. Works before Initialize.
Status ClearRepository();
/// Selects the file's records that carry this tag (at most 255 characters, any case), besides those selected
/// before.
Status SetTag(std::u16string_view tag);

/// Reads the BMC's whole repository into the system set. kRepositoryEmpty when it holds no record.
Status LoadConfigurationFromSystem();
/// Reads an SDR file into the file set. kCannotOpenFile, or the status of what is wrong in it.
Status LoadConfigurationFromFile(std::u16string_view fileName);

/// Shows the BMC's repository, record by record.
Status DisplaySdrArea();
/// Clears the repository, writes the selected records of the file set in type order, reads back and compares;
/// only compares in compare-only mode. kNotLoaded without a loaded file, kDifferent when the comparison
/// fails.
Status CommitConfigurationToSystem();

}  // namespace varnok::SdrData

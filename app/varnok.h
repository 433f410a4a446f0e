// The application object: brings every subsystem up in a fixed order, turns the
// command line into one run mode, runs it, and keeps the message to show when
// something failed.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "app/run_mode.h"
#include "firmware/status.h"

namespace varnok {

class CVarnok {
 public:
  /// Returns 0 or an app_status. Managers stay initialised until the program
  /// ends.
  int Initialize();
  void DeInitialize();

  /// 0, or 1 when the usage text was printed because there were no arguments or
  /// the line is invalid.
  int ParseCommandLine(int argc, char* argv[]);

  /// Runs the chosen mode and returns its status.
  int Execute();
  int DisplaySystemInformation();
  int FruExecutive();
  int SdrExecutive();
  int CfgFileExecutive();
  int DisplayUsage();

  /// Completes a file name: a folder (its last character a backslash) names its MASTER.CFG whatever the
  /// extension asked for; a last part without a dot gets the extension. At most 255 characters are kept.
  static void AddDefaultExtension(std::u16string& fileName, std::u16string_view extension);

  /// Opens a temporary output file and marks it as 16-bit text. 0; 2 when it
  /// cannot be created; 11 without names.
  int ValidateTmpFileName(std::u16string* outName, std::u16string* name);

  void SetDebugLevel(std::uint64_t level) { debugLevel_ = level; }
  /// Null or empty when no manager left a message.
  const char16_t* LastErrorMessage() const { return lastErrorMessage_; }

 private:
  void IsAlreadyRunning();
  void SetCtrl_C_Enable();
  int InitializeBmcState();
  int InitializeManagers();
  int DisplayFru();
  int DisplaySdr();
  int DisplaySmbios();
  int UseTemporaryFile(std::u16string name, std::u16string& outName);
  int FailWith(std::u16string message, int status);
  /// Takes over the message of the subsystem that failed and says in the log what did.
  int FailStep(const char* line, int status, Status (*getMessage)(const char16_t*& text));

  std::uint64_t debugLevel_ = 0;
  std::u16string message_;  ///< the object's own message text
  const char16_t* lastErrorMessage_ = message_.c_str();
  std::u16string fileName_;
  RunMode mode_ = RunMode::NoMode;
};

}  // namespace varnok

#include "sdr/output.h"

#include "app/services/console.h"
#include "app/services/text.h"
#include "app/services/text_output.h"
#include "app/services/trace.h"
#include "sdr/data_set.h"

namespace varnok {

void SdrUtility::DisplayProgress(ProgressStyle style, std::u16string_view text, std::uint32_t current,
                                 std::uint32_t total) {
  TraceScope scope("SdrUtility::DisplayProgress");
  const SdrDataSet* set = TheSdr().current;
  if (set != nullptr && set->progress != nullptr) set->progress(style, text, current, total);
}

void SdrUtility::DisplayHex(std::span<const std::uint8_t> bytes, File* file) {
  const SdrDataSet* set = TheSdr().current;
  if (set != nullptr && set->displayHex != nullptr) set->displayHex(bytes.data(), bytes.size(), file);
}

void SdrUtility::WriteOutput(std::u16string_view text) {
  // The output file mirrors what was shown: when it cannot take a text, the run goes on.
  if (TheSdr().output != nullptr) (void)WriteText(*TheSdr().output, text);
}

void SdrUtility::PrintText(std::u16string_view text) {
  varnok::PrintText(text);
  WriteOutput(text);
}

bool SdrUtility::PagingPrompt() {
  TraceScope scope("SdrUtility::PagingPrompt");
  varnok::PrintText(u"\n[S]top, [N]on-stop, or [M]ore");
  for (;;) {
    switch (ToUpper(GetKey(0))) {
      case u'M':
        varnok::PrintText(u"\n\n");
        return true;
      case u'N':
        // Kept: no line feeds here, unlike the prompt of the other displays.
        TheSdr().isPaging = false;
        return true;
      case u'S':
        return false;
      default:
        break;
    }
  }
}

}  // namespace varnok

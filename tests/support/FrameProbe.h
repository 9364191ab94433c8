// The frames that a piece of code opens and closes.
#ifndef TESTS_SUPPORT_FRAMEPROBE_H
#define TESTS_SUPPORT_FRAMEPROBE_H

#include <string>
#include <utility>
#include <vector>

#include <zarel/C_Trace.h>

namespace support {

/** Notes the frames that are opened and closed while it lives, "+name" and "-name". */
class FrameProbe {
public:
  FrameProbe() {
    seen_.clear();
    SetXternalTrackFuncs([](char* name) { seen_.push_back(std::string("+") + name); },
                         [](char* name) { seen_.push_back(std::string("-") + name); });
  }
  FrameProbe(const FrameProbe&) = delete;
  FrameProbe& operator=(const FrameProbe&) = delete;
  ~FrameProbe() { SetXternalTrackFuncs(nullptr, nullptr); }
  /** The frames since the last time that was asked. */
  static std::vector<std::string> taken() { return std::exchange(seen_, {}); }

private:
  static inline std::vector<std::string> seen_;
};

} // namespace support

#endif

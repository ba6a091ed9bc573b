// A client library to run Wakerly against: the smallest that meets the contract, with answers
// steered by environment variables.
//
//   KDUPDATER_TRACE             a file that gets one line for each call
//   KDUPDATER_LATEST_RESULT     result of the latest-application request (258, "taken")
//   KDUPDATER_LATEST_THROWS     the request throws: "exception", or "other" (a number)
//   KDUPDATER_CALLBACK          who calls back: "thread" (one of the library's own, the default), or
//                               "request" (the caller's, before the request returns)
//   KDUPDATER_CALLBACK_DELAY_MS how long the thread waits before it calls back (0)
//   KDUPDATER_CALLBACK_CODE     the callback's result code (0)
//   KDUPDATER_CALLBACK_AGAIN    call back once more at "release" or at "unload"
//   KDUPDATER_INVOKE_RESULT     result of the invoke request (0)
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <thread>

#include "launcher/kd_client.h"

namespace {

std::string Setting(const char* name, const char* otherwise) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : otherwise;
}

std::uint32_t Number(const char* name, const char* otherwise) {
  return static_cast<std::uint32_t>(std::stoul(Setting(name, otherwise), nullptr, 0));
}

void Trace(const std::string& line) {
  const std::string path = Setting("KDUPDATER_TRACE", "");
  if (path.empty()) return;
  if (std::FILE* trace = std::fopen(path.c_str(), "a")) {
    std::fprintf(trace, "%s\n", line.c_str());
    std::fclose(trace);
  }
}

// Lives as long as the library is loaded.
class Library {
 public:
  Library() { Trace("loaded"); }
  ~Library() {
    Join();
    CallAgain("unload");
    Trace("unloaded");
  }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  void Answer(VantreKDCallback* callback) {
    callback_ = callback;
    if (Setting("KDUPDATER_CALLBACK", "thread") == "request") {
      Call();
    } else {
      thread_ = std::thread([this] {
        const std::chrono::milliseconds delay(Number("KDUPDATER_CALLBACK_DELAY_MS", "0"));
        std::this_thread::sleep_for(delay);
        Call();
      });
    }
  }

  void Release() {
    Join();
    CallAgain("release");
  }

 private:
  void Call() {
    const std::uint32_t code = Number("KDUPDATER_CALLBACK_CODE", "0");
    Trace("callback code=" + std::to_string(code));
    callback_(code);
  }

  void CallAgain(const char* when) {
    if (callback_ != nullptr && Setting("KDUPDATER_CALLBACK_AGAIN", "") == when) Call();
  }

  void Join() {
    if (thread_.joinable()) thread_.join();
  }

  VantreKDCallback* callback_ = nullptr;
  std::thread thread_;
};

Library g_library;

}  // namespace

extern "C" {

std::uint32_t Vantre_KD_GetLatestKDApplication(const VantreKDLatestApplicationRequest* request,
                                               VantreKDCallback* callback) {
  Trace("latest record=" + std::to_string(request->record_version) + " name=" +
        request->application_name + " version=" + request->application_version + " reserved=" +
        std::to_string(request->reserved[0] | request->reserved[1] | request->reserved[2]));
  const std::string throws = Setting("KDUPDATER_LATEST_THROWS", "");
  if (throws == "exception") throw std::runtime_error("no latest application");
  if (throws == "other") throw 1;
  const std::uint32_t result = Number("KDUPDATER_LATEST_RESULT", "258");
  if (result == kKDRequestTaken) g_library.Answer(callback);
  return result;
}

std::uint32_t Vantre_KD_InvokeApplication(const VantreKDInvokeRequest* request) {
  Trace("invoke record=" + std::to_string(request->record_version) +
        " name=" + request->application_name + " reserved=" + std::to_string(request->reserved));
  return Number("KDUPDATER_INVOKE_RESULT", "0");
}

std::uint32_t Vantre_KD_ReleaseRef() {
  Trace("release");
  g_library.Release();
  return 0;
}

}  // extern "C"

// A client library to run Wakerly against: the smallest that meets the contract, with answers and
// faults steered by environment variables. LIST stands for items with commas between them.
//
//   KDUPDATER_TRACE             a file that gets one line for each call
//   KDUPDATER_LATEST_RESULT     result of the latest-application request (258, "taken")
//   KDUPDATER_INVOKE_RESULT     result of the invoke request (0)
//   KDUPDATER_CALLBACK          LIST of when to call back once: "request" (before the request
//                               returns), "thread" (on one of the library's own, the default),
//                               "release", "unload"
//   KDUPDATER_CALLBACK_DELAY_MS how long the thread waits before it calls back (0)
//   KDUPDATER_CALLBACK_CODE     LIST of the callbacks' result codes; the last one stays (0)
//   KDUPDATER_THROWS            ENTRY:WHAT, where ENTRY ("latest", "invoke" or "release") throws
//                               an "exception", a "mute" one (its text is null) or an "other" (a
//                               number)
//   KDUPDATER_MEDDLES           LIST of what the latest-application request does to the process:
//                               "euid" (becomes user 1), "folder" (goes to the root folder),
//                               "locale" (takes the environment's), "signals" (blocks all),
//                               "thread" (one that calls back until the process has ended, for
//                               which the library stays loaded)
#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <locale>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "launcher/kd_client.h"

namespace {

std::string Setting(const char* name, const char* otherwise) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : otherwise;
}

std::vector<std::string> List(const char* name, const char* otherwise) {
  std::istringstream text(Setting(name, otherwise));
  std::vector<std::string> items;
  for (std::string item; std::getline(text, item, ',');) items.push_back(item);
  return items;
}

std::uint32_t Number(const std::string& text) {
  return static_cast<std::uint32_t>(std::stoul(text, nullptr, 0));
}

// Opened once, since meddling may take away the right to open it.
std::FILE* const g_trace = std::fopen(Setting("KDUPDATER_TRACE", "").c_str(), "a");

void Trace(const std::string& line) {
  if (g_trace == nullptr) return;
  std::fprintf(g_trace, "%s\n", line.c_str());
  std::fflush(g_trace);
}

// Outlives everything else here: the thread left behind may be at work to the very end.
std::atomic<unsigned> g_calls_of_the_left = 0;

// Lives as long as the library is loaded.
class Library {
 public:
  Library() { Trace("loaded"); }
  ~Library() {
    Join();
    CallWhen("unload");
    WaitForTheLeft();
    Trace("unloaded");
    if (g_trace != nullptr) std::fclose(g_trace);
  }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  void Answer(VantreKDCallback* callback) {
    callback_ = callback;
    CallWhen("request");
    if (std::count(moments_.begin(), moments_.end(), "thread") == 0) return;
    thread_ = std::thread([this] {
      const std::chrono::milliseconds delay(Number(Setting("KDUPDATER_CALLBACK_DELAY_MS", "0")));
      std::this_thread::sleep_for(delay);
      CallWhen("thread");
    });
  }

  void Release() {
    Join();
    CallWhen("release");
  }

  void LeaveThread(VantreKDCallback* callback) {
    Dl_info self{};
    dladdr(this, &self);
    left_ = dlopen(self.dli_fname, RTLD_NOW | RTLD_NODELETE) != nullptr;
    if (!left_) return;
    std::thread([callback] {
      for (;; ++g_calls_of_the_left) {
        callback(0);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
      }
    }).detach();
  }

 private:
  void CallWhen(const std::string& moment) {
    if (callback_ == nullptr) return;
    for (auto left = std::count(moments_.begin(), moments_.end(), moment); left > 0; --left) {
      const std::uint32_t code = Number(codes_.front());
      if (codes_.size() > 1) codes_.erase(codes_.begin());
      Trace("callback code=" + std::to_string(code));
      callback_(code);
    }
  }

  void Join() {
    if (thread_.joinable()) thread_.join();
  }

  // At the second call from now, a whole one has come from it.
  void WaitForTheLeft() const {
    const unsigned calls = g_calls_of_the_left;
    while (left_ && g_calls_of_the_left - calls < 2) std::this_thread::yield();
  }

  const std::vector<std::string> moments_ = List("KDUPDATER_CALLBACK", "thread");
  std::vector<std::string> codes_ = List("KDUPDATER_CALLBACK_CODE", "0");
  VantreKDCallback* callback_ = nullptr;
  std::thread thread_;
  bool left_ = false;
};

Library g_library;

void Meddle(VantreKDCallback* callback) {
  for (const std::string& what : List("KDUPDATER_MEDDLES", "")) {
    [[maybe_unused]] int ignored = 0;
    if (what == "euid") ignored = seteuid(1);
    if (what == "folder") ignored = chdir("/");
    if (what == "locale") std::locale::global(std::locale(""));
    if (what == "thread") g_library.LeaveThread(callback);
    if (what == "signals") {
      sigset_t all;
      sigfillset(&all);
      pthread_sigmask(SIG_BLOCK, &all, nullptr);
    }
  }
}

class MuteException : public std::exception {
 public:
  const char* what() const noexcept override { return nullptr; }
};

void ThrowIfTold(const std::string& entry) {
  const std::string throws = Setting("KDUPDATER_THROWS", "");
  if (throws == entry + ":exception") throw std::runtime_error("thrown by " + entry);
  if (throws == entry + ":mute") throw MuteException();
  if (throws == entry + ":other") throw 1;
}

}  // namespace

extern "C" {

std::uint32_t Vantre_KD_GetLatestKDApplication(const VantreKDLatestApplicationRequest* request,
                                               VantreKDCallback* callback) {
  Trace("latest record=" + std::to_string(request->record_version) + " name=" +
        request->application_name + " version=" + request->application_version + " reserved=" +
        std::to_string(request->reserved[0] | request->reserved[1] | request->reserved[2]));
  const std::uint32_t result = Number(Setting("KDUPDATER_LATEST_RESULT", "258"));
  Meddle(callback);
  if (result == kKDRequestTaken) g_library.Answer(callback);
  ThrowIfTold("latest");
  return result;
}

std::uint32_t Vantre_KD_InvokeApplication(const VantreKDInvokeRequest* request) {
  Trace("invoke record=" + std::to_string(request->record_version) +
        " name=" + request->application_name + " reserved=" + std::to_string(request->reserved));
  ThrowIfTold("invoke");
  return Number(Setting("KDUPDATER_INVOKE_RESULT", "0"));
}

std::uint32_t Vantre_KD_ReleaseRef() {
  Trace("release");
  g_library.Release();
  ThrowIfTold("release");
  return 0xFFFFFFFF;  // nobody may look at it
}

}  // extern "C"

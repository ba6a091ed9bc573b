// A client library to run Wakerly against: the smallest that meets the contract, with answers and
// faults steered by environment variables. LIST stands for items with commas between them. What is
// empty or makes no sense is reported on standard error: an empty setting then counts as not set, a
// number as its default, and an item of a list is left out.
//
//   KDUPDATER_TRACE             a file that gets one line for each call
//   KDUPDATER_LOADING           what becomes of the process while the library is loaded: it "waits"
//                               without an end, and a child of it with it, "crashes" or "exits"; ""
//                               for nothing
//   KDUPDATER_LATEST_RESULT     result of the latest-application request (258, "taken")
//   KDUPDATER_INVOKE_RESULT     result of the invoke request (0)
//   KDUPDATER_CALLBACK          LIST of when to call back once: "request" (before the request
//                               returns), "thread" (on one of the library's own, the default),
//                               "release", "unload"; or "none" for never
//   KDUPDATER_CALLBACK_DELAY_MS how long the thread waits before it calls back (0)
//   KDUPDATER_CALLBACK_CODE     LIST of the callbacks' result codes; the last one stays (0)
//   KDUPDATER_THROWS            LIST of ENTRY:WHAT: ENTRY ("latest", "invoke" or "release") throws
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
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <limits>
#include <locale>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "launcher/kd_client.h"

namespace {

using Items = std::vector<std::string>;

void Report(const char* name, const std::string& what) {
  std::fprintf(stderr, "kdupdater: %s %s\n", name, what.c_str());
}

std::string Setting(const char* name, const char* otherwise) {
  const char* value = std::getenv(name);
  if (value == nullptr) return otherwise;
  if (*value == '\0') Report(name, "is empty and counts as not set");
  return *value != '\0' ? value : otherwise;
}

Items Split(const std::string& list) {
  std::istringstream text(list);
  Items items;
  for (std::string item; std::getline(text, item, ',');) items.push_back(item);
  return items;
}

std::ptrdiff_t Count(const Items& items, const std::string& item) {
  return std::count(items.begin(), items.end(), item);
}

// The items of a list that are among `known`.
Items Words(const char* name, const char* otherwise, const Items& known) {
  Items words;
  for (const std::string& item : Split(Setting(name, otherwise))) {
    if (Count(known, item) > 0) {
      words.push_back(item);
    } else {
      Report(name, "has the unknown item \"" + item + "\", which is left out");
    }
  }
  return words;
}

std::uint32_t Number(const char* name, const std::string& text, std::uint32_t otherwise) {
  char* end = nullptr;
  const unsigned long long number = std::strtoull(text.c_str(), &end, 0);
  const bool is_number = text.find_first_of("0123456789") == 0 && *end == '\0';
  if (is_number && number <= std::numeric_limits<std::uint32_t>::max()) {
    return static_cast<std::uint32_t>(number);
  }
  Report(name, "has \"" + text + "\", which is no number of 32 bits: " + std::to_string(otherwise) +
                   " is taken");
  return otherwise;
}

std::uint32_t Number(const char* name, std::uint32_t otherwise) {
  return Number(name, Setting(name, std::to_string(otherwise).c_str()), otherwise);
}

// At least one.
std::vector<std::uint32_t> Numbers(const char* name, std::uint32_t otherwise) {
  std::vector<std::uint32_t> numbers;
  for (const std::string& item : Split(Setting(name, std::to_string(otherwise).c_str()))) {
    numbers.push_back(Number(name, item, otherwise));
  }
  return numbers;
}

std::FILE* OpenTrace() {
  const char* const name = "KDUPDATER_TRACE";
  const std::string path = Setting(name, "");
  if (path.empty()) return nullptr;
  std::FILE* const trace = std::fopen(path.c_str(), "a");
  if (trace == nullptr) Report(name, "names \"" + path + "\": " + std::strerror(errno));
  return trace;
}

// Read when the library is loaded, since meddling may take away the right to open the trace.
struct Settings {
  std::FILE* const trace = OpenTrace();
  const std::uint32_t latest_result = Number("KDUPDATER_LATEST_RESULT", kKDRequestTaken);
  const std::uint32_t invoke_result = Number("KDUPDATER_INVOKE_RESULT", 0);
  const Items moments =
      Words("KDUPDATER_CALLBACK", "thread", {"request", "thread", "release", "unload", "none"});
  const std::chrono::milliseconds delay{Number("KDUPDATER_CALLBACK_DELAY_MS", 0)};
  const std::vector<std::uint32_t> codes = Numbers("KDUPDATER_CALLBACK_CODE", 0);
  const Items throws =
      Words("KDUPDATER_THROWS", "",
            {"latest:exception", "latest:mute", "latest:other", "invoke:exception", "invoke:mute",
             "invoke:other", "release:exception", "release:mute", "release:other"});
  const Items meddles =
      Words("KDUPDATER_MEDDLES", "", {"euid", "folder", "locale", "signals", "thread"});
};

const Settings g_settings;

void Trace(const std::string& line) {
  if (g_settings.trace == nullptr) return;
  std::fprintf(g_settings.trace, "%s\n", line.c_str());
  std::fflush(g_settings.trace);
}

__attribute__((constructor)) void Load() {
  const char* const value = std::getenv("KDUPDATER_LOADING");
  const std::string what = value != nullptr ? value : "";
  if (what.empty()) return;
  std::puts("The library is loaded.");
  if (what == "waits" && fork() >= 0) {
    while (true) pause();
  }
  if (what == "crashes") std::abort();
  if (what == "exits") std::exit(7);
}

// Where the library is unloaded, this runs before its static objects go; where the process ends
// with the library still loaded, after them (so does glibc).
bool g_unloading = false;
__attribute__((destructor)) void NoteUnloading() { g_unloading = true; }

// Outlives everything else here: the thread left behind may run until the process has ended.
std::atomic<unsigned> g_calls_of_the_left = 0;

// Lives as long as the library is loaded.
class Library {
 public:
  Library() { Trace("loaded"); }
  ~Library() {
    Join();
    CallWhen("unload");
    WaitForTheLeft();
    Trace(g_unloading ? "unloaded" : "still loaded at the end of the process");
    if (g_settings.trace != nullptr) std::fclose(g_settings.trace);
  }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  void Answer(VantreKDCallback* callback) {
    callback_ = callback;
    CallWhen("request");
    if (Count(g_settings.moments, "thread") == 0) return;
    thread_ = std::thread([this] {
      std::this_thread::sleep_for(g_settings.delay);
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
    for (auto left = Count(g_settings.moments, moment); left > 0; --left) {
      const std::uint32_t code = *next_code_;
      if (next_code_ + 1 != g_settings.codes.end()) ++next_code_;
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

  std::vector<std::uint32_t>::const_iterator next_code_ = g_settings.codes.begin();
  VantreKDCallback* callback_ = nullptr;
  std::thread thread_;
  bool left_ = false;
};

Library g_library;

void Meddle(VantreKDCallback* callback) {
  for (const std::string& what : g_settings.meddles) {
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
  const auto told = [&](const char* what) { return Count(g_settings.throws, entry + what) > 0; };
  if (told(":exception")) throw std::runtime_error("thrown by " + entry);
  if (told(":mute")) throw MuteException();
  if (told(":other")) throw 1;
}

}  // namespace

extern "C" {

std::uint32_t Vantre_KD_GetLatestKDApplication(const VantreKDLatestApplicationRequest* request,
                                               VantreKDCallback* callback) {
  Trace("latest record=" + std::to_string(request->record_version) + " name=" +
        request->application_name + " version=" + request->application_version + " reserved=" +
        std::to_string(request->reserved[0] | request->reserved[1] | request->reserved[2]));
  Meddle(callback);
  if (g_settings.latest_result == kKDRequestTaken) g_library.Answer(callback);
  ThrowIfTold("latest");
  return g_settings.latest_result;
}

std::uint32_t Vantre_KD_InvokeApplication(const VantreKDInvokeRequest* request) {
  Trace("invoke record=" + std::to_string(request->record_version) +
        " name=" + request->application_name + " reserved=" + std::to_string(request->reserved));
  ThrowIfTold("invoke");
  return g_settings.invoke_result;
}

std::uint32_t Vantre_KD_ReleaseRef() {
  Trace("release");
  g_library.Release();
  ThrowIfTold("release");
  return 0xFFFFFFFF;  // no caller may look at it
}

}  // extern "C"

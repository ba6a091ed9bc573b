#include "launcher/kodo_launcher.h"

#include <chrono>
#include <exception>
#include <string>
#include <thread>
#include <utility>

#include "esd/log/updater_log.h"
#include "esd/util/program_version.h"
#include "welko/folder_path.h"
#include "welko/path.h"

namespace wakerly {
namespace {

constexpr const char* kApplicationName = "MondoUpdater";

// Owned here; the lock keeps the instance alive while a callback runs in it. Neither is
// destroyed when the process ends, since a callback may come as late as that.
VantreUpdaterKodoLauncher* g_instance = nullptr;

std::mutex& InstanceLock() {
  static std::mutex& lock = *new std::mutex;
  return lock;
}

void Log(const char* text) {
  esd::UpdaterLog(esd::kMessageLevel, std::string("VantreUpdaterKodoLauncher : ") + text);
}

void LogNumber(const char* label, std::uint32_t number) {
  esd::UpdaterLogInt(esd::kMessageLevel, std::string("VantreUpdaterKodoLauncher : ") + label,
                     static_cast<int>(number));
}

}  // namespace

std::string ClientLibraryPath() {
  std::string path;
  welko::GetFolderPath(welko::kFolderVantreAppSupport, path);
  welko::AppendPathComponent(path, "/VantreKDClient/kdupdater.dylib");
  return path;
}

VantreUpdaterKodoLauncher* VantreUpdaterKodoLauncher::getInstance() {
  const std::lock_guard<std::mutex> guard(InstanceLock());
  if (g_instance == nullptr) g_instance = new VantreUpdaterKodoLauncher;
  return g_instance;
}

void VantreUpdaterKodoLauncher::destroyInstance() {
  VantreUpdaterKodoLauncher* instance = nullptr;
  {
    const std::lock_guard<std::mutex> guard(InstanceLock());
    instance = std::exchange(g_instance, nullptr);
  }
  // Closing the library may wait for its threads, and they may be waiting in the callback. It finds
  // no instance from here on, so none needs the lock, which is destroyed before the library closes.
  delete instance;
}

void VantreUpdaterKodoLauncher::runKodoWorkflow() {
  try {
    initialize();
    getLatestKDApplication();
    waitForCFUCallBack();
    invokeKDApplication();
    finalize();
  } catch (const std::exception& error) {
    const char* const text = error.what();
    Log((std::string("Error encountered in Kodo WorkFlow = ") + (text != nullptr ? text : ""))
            .c_str());
  } catch (...) {
    Log("Unknown Error encountered in Kodo WorkFlow ");
  }
}

void VantreUpdaterKodoLauncher::initialize() {
  Log("inside initialize.");
  const std::string path = ClientLibraryPath();
  std::string library;
  welko::ToString(path, library);
  if (!library_.Load(library)) {
    esd::UpdaterLogValue(esd::kMessageLevel,
                         "VantreUpdaterKodoLauncher : Unable to load kodo library from path ",
                         path);
    throw std::exception();
  }
  resolve(get_latest_application_, kKDGetLatestName);
  resolve(invoke_application_, kKDInvokeName);
  resolve(release_ref_, kKDReleaseName);
}

template <typename EntryPoint>
void VantreUpdaterKodoLauncher::resolve(EntryPoint*& entry_point, const char* symbol) {
  if (entry_point == nullptr)
    entry_point = reinterpret_cast<EntryPoint*>(library_.GetSymbol(symbol));
  if (entry_point != nullptr) return;
  Log((std::string("Unable to find the handle to API ") + symbol + ".").c_str());
  throw std::exception();
}

void VantreUpdaterKodoLauncher::getLatestKDApplication() {
  Log("inside getLatestKDApplication.");
  const VantreKDLatestApplicationRequest request = {
      kKDRecordVersion, kApplicationName, esd::ProgramVersion(), {0, 0, 0}};
  const std::uint32_t result = get_latest_application_(&request, &VantreKD_CFUCallbackFn);
  if (result == kKDRequestTaken) return;
  LogNumber("VantreKD_GetLatestKDApplication returned error code ", result);
  throw std::exception();
}

void VantreUpdaterKodoLauncher::waitForCFUCallBack() {
  Log("inside waitForCFUCallBack.");
  while (!callbackArrived()) std::this_thread::sleep_for(std::chrono::seconds(1));
  Log("VantreKD_CFUCallbackFn is invoked");
  const std::uint32_t result = callbackResult();
  if (result == 0) return;
  LogNumber("VantreKD_CFUCallbackFn returned error code ", result);
  throw std::exception();
}

void VantreUpdaterKodoLauncher::invokeKDApplication() {
  Log("inside invokeKDApplication.");
  const VantreKDInvokeRequest request = {kKDRecordVersion, kApplicationName, 0};
  const std::uint32_t result = invoke_application_(&request);
  if (result != 0) LogNumber("VantreKD_InvokeApplication returned error code ", result);
  Log("VantreKD_ReleaseRef called.");
  release_ref_();
}

void VantreUpdaterKodoLauncher::finalize() {
  Log("inside finalize.");
  if (!library_.IsLoaded()) return;
  library_.Unload();
  Log("unloaded kodo library");
}

bool VantreUpdaterKodoLauncher::callbackArrived() {
  const std::lock_guard<PlatformMutex> guard(lock_);
  return callback_arrived_;
}

std::uint32_t VantreUpdaterKodoLauncher::callbackResult() {
  const std::lock_guard<PlatformMutex> guard(lock_);
  return callback_result_;
}

// Two sections, the code first: a reader that sees the callback as arrived sees its code too.
void VantreUpdaterKodoLauncher::takeCallback(std::uint32_t result_code) {
  {
    const std::lock_guard<PlatformMutex> guard(lock_);
    callback_result_ = result_code;
  }
  const std::lock_guard<PlatformMutex> guard(lock_);
  callback_arrived_ = true;
}

}  // namespace wakerly

void VantreKD_CFUCallbackFn(std::uint32_t result_code) {
  const std::lock_guard<std::mutex> guard(wakerly::InstanceLock());
  if (wakerly::g_instance != nullptr) wakerly::g_instance->takeCallback(result_code);
}

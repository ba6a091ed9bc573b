// The launcher of the updater client library: loads it, asks it for the updater's latest version,
// waits for the answer, has it run the updater, and unloads it.
#ifndef LAUNCHER_KODO_LAUNCHER_H_
#define LAUNCHER_KODO_LAUNCHER_H_

#include <cstdint>
#include <string>

#include "launcher/client_library.h"
#include "launcher/kd_client.h"
#include "launcher/platform_mutex.h"

/// The callback that the client library gets. May be called on any thread, any number of times, and
/// at any time: without a launcher it has no effect.
extern "C" void VantreKD_CFUCallbackFn(std::uint32_t result_code);

namespace wakerly {

/// The path of the client library, which may be missing.
std::string ClientLibraryPath();

/// One per process, used by the main thread; only the callback may come from another.
class VantreUpdaterKodoLauncher {
 public:
  /// The instance, made on the first call. It belongs to the class and lives until destroyInstance.
  static VantreUpdaterKodoLauncher* getInstance();
  /// Destroys the instance, if there is one, and closes a library that is still loaded.
  static void destroyInstance();

  /// Drives the whole workflow. Waits for the callback without limit. A failed invoke request is
  /// only logged; every other failure ends the workflow with lines in the log and leaves the
  /// library loaded. Nothing is thrown.
  void runKodoWorkflow();

  VantreUpdaterKodoLauncher(const VantreUpdaterKodoLauncher&) = delete;
  VantreUpdaterKodoLauncher& operator=(const VantreUpdaterKodoLauncher&) = delete;

 private:
  friend void ::VantreKD_CFUCallbackFn(std::uint32_t result_code);

  VantreUpdaterKodoLauncher() = default;
  ~VantreUpdaterKodoLauncher() = default;

  // The steps of the workflow, in their order. Each of the first three throws std::exception, after
  // a line in the log, when it fails.
  void initialize();
  void getLatestKDApplication();
  void waitForCFUCallBack();
  void invokeKDApplication();
  void finalize();

  template <typename EntryPoint>
  void resolve(EntryPoint*& entry_point, const char* symbol);
  bool callbackArrived();
  std::uint32_t callbackResult();
  void takeCallback(std::uint32_t result_code);

  VantreKDGetLatestApplication* get_latest_application_ = nullptr;
  VantreKDInvokeApplication* invoke_application_ = nullptr;
  VantreKDReleaseRef* release_ref_ = nullptr;
  std::uint32_t callback_result_ = 65535;
  bool callback_arrived_ = false;
  ClientLibrary library_;   ///< closed after the lock is gone: see destroyInstance
  PlatformMutex lock_{""};  ///< guards the two callback fields
};

}  // namespace wakerly

#endif  // LAUNCHER_KODO_LAUNCHER_H_

// The binary contract with the updater client library: entry points, request records, result codes.
//
// Field widths and offsets are fixed. Texts in a record stay the caller's and live for the call
// only.
#ifndef LAUNCHER_KD_CLIENT_H_
#define LAUNCHER_KD_CLIENT_H_

#include <cstddef>
#include <cstdint>

extern "C" {

/// Asks for the latest version of an application.
struct VantreKDLatestApplicationRequest {
  std::uint32_t record_version;     ///< kKDRecordVersion
  const char* application_name;     ///< the application that is asked about
  const char* application_version;  ///< the version of the program that asks
  std::uint64_t reserved[3];        ///< 0
};

/// Asks to run an application.
struct VantreKDInvokeRequest {
  std::uint32_t record_version;  ///< kKDRecordVersion
  const char* application_name;  ///< the application to run
  std::uint64_t reserved;        ///< 0
};

/// Receives the outcome of a latest-application request, 0 for success, on any thread.
using VantreKDCallback = void(std::uint32_t result_code);

/// Takes the request; kKDRequestTaken says that the outcome will come through the callback, any
/// other result is an error.
using VantreKDGetLatestApplication = std::uint32_t(const VantreKDLatestApplicationRequest* request,
                                                   VantreKDCallback* callback);
/// Runs the application; 0 for success.
using VantreKDInvokeApplication = std::uint32_t(const VantreKDInvokeRequest* request);
/// Ends the use of the library.
using VantreKDReleaseRef = std::uint32_t();

}  // extern "C"

/// The names of the entry points: of VantreKDGetLatestApplication, VantreKDInvokeApplication and
/// VantreKDReleaseRef.
///@{
inline constexpr char kKDGetLatestName[] = "Vantre_KD_GetLatestKDApplication";
inline constexpr char kKDInvokeName[] = "Vantre_KD_InvokeApplication";
inline constexpr char kKDReleaseName[] = "Vantre_KD_ReleaseRef";
///@}

/// The version of the records that stand here.
inline constexpr std::uint32_t kKDRecordVersion = 4;
/// The result of a latest-application request whose outcome comes through the callback.
inline constexpr std::uint32_t kKDRequestTaken = 0x102;

static_assert(sizeof(VantreKDLatestApplicationRequest) == 48);
static_assert(offsetof(VantreKDLatestApplicationRequest, application_name) == 8);
static_assert(offsetof(VantreKDLatestApplicationRequest, application_version) == 16);
static_assert(offsetof(VantreKDLatestApplicationRequest, reserved) == 24);
static_assert(sizeof(VantreKDInvokeRequest) == 24);
static_assert(offsetof(VantreKDInvokeRequest, application_name) == 8);
static_assert(offsetof(VantreKDInvokeRequest, reserved) == 16);

#endif  // LAUNCHER_KD_CLIENT_H_

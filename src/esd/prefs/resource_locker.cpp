#include "esd/prefs/resource_locker.h"

#include <fcntl.h>
#include <semaphore.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <new>
#include <utility>

#include "esd/prefs/held_signals.h"
#include "esd/prefs/resource_lock_error.h"
#include "esd/util/base64.h"
#include "platform/md5.h"
#include "platform/semaphore_name.h"

namespace esd {
namespace {

// glibc's sem_open asks for two small blocks after it has made the semaphore, and leaves it behind
// when it gets none. It gets those that this thread gave back last: one of each size.
void FreeSmallBlocks() {
  constexpr std::size_t kSmallest = 24;
  constexpr std::size_t kLargest = 120;
  constexpr std::size_t kStep = 16;
  for (std::size_t size = kSmallest; size <= kLargest; size += kStep) {
    ::operator delete(::operator new(size));
  }
}

}  // namespace

class ResourceLocker::ResourceLockerPlat {
 public:
  ResourceLockerPlat(std::string resource, unsigned long timeout)
      : resource_(std::move(resource)), timeout_(timeout) {}

  virtual ~ResourceLockerPlat() {
    if (IsLocked()) Remove(name_);
  }
  ResourceLockerPlat(const ResourceLockerPlat&) = delete;
  ResourceLockerPlat& operator=(const ResourceLockerPlat&) = delete;

  bool Lock() {
    constexpr int kAttempts = 100;
    constexpr useconds_t kPause = 10'000;
    if (IsLocked()) throw resource_lock_fail(resource_, "A resource is already being locked");
    name_ = SemaphoreOf(resource_);
    FreeSmallBlocks();
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
      // A signal between the two steps would end the process with the semaphore in place.
      signals_.Hold();
      semaphore_ = sem_open(name_.c_str(), O_CREAT | O_EXCL, 0700, 1);
      if (IsLocked()) return true;
      signals_.Deliver();
      usleep(kPause);
    }
    return false;
  }

  bool Unlock(bool force) {
    if (!IsLocked() && !force) {
      throw no_resource_lock("Resource unknown", "This object is not locking an item");
    }
    return IsLocked() ? Remove(name_) : Remove(SemaphoreOf(resource_));
  }

  bool IsLocked() const { return semaphore_ != SEM_FAILED; }

 private:
  bool Remove(const std::string& name) {
    const bool removed = sem_unlink(name.c_str()) == 0;
    if (removed && IsLocked()) {
      sem_close(semaphore_);
      semaphore_ = SEM_FAILED;
    }
    // Where there is nothing to remove, there is nothing to be left behind either.
    signals_.Deliver();
    return removed;
  }

  sem_t* semaphore_ = SEM_FAILED;
  const std::string resource_;
  std::string name_;  ///< of the semaphore that is held: letting go must not need memory
  [[maybe_unused]] const unsigned long timeout_;
  HeldSignals signals_;
};

ResourceLocker::ResourceLocker(const std::string& resourceName, unsigned long timeout)
    : plat_(std::make_unique<ResourceLockerPlat>(resourceName, timeout)) {}

ResourceLocker::~ResourceLocker() = default;

bool ResourceLocker::Lock() { return plat_->Lock(); }
bool ResourceLocker::Unlock(bool force) { return plat_->Unlock(force); }
bool ResourceLocker::IsLocked() { return plat_->IsLocked(); }

std::string ResourceLocker::SemaphoreOf(const std::string& resource) {
  const std::array<unsigned char, 16> digest = platform::Md5Digest(resource);
  return platform::SemaphoreName(EncodeBase64(digest.data(), digest.size()));
}

bool ResourceLocker::IsTaken(const std::string& resource) {
  sem_t* const semaphore = sem_open(SemaphoreOf(resource).c_str(), 0);
  if (semaphore == SEM_FAILED) return errno != ENOENT;
  sem_close(semaphore);
  return true;
}

}  // namespace esd

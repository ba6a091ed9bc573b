// The misuses of a resource lock.
#ifndef ESD_PREFS_RESOURCE_LOCK_ERROR_H_
#define ESD_PREFS_RESOURCE_LOCK_ERROR_H_

#include <stdexcept>
#include <string>
#include <utility>

namespace esd {

/// A lock was asked for that its owner holds already.
class resource_lock_fail : public std::runtime_error {
 public:
  /// `resource` is the name of what is locked, `message` what what() gives.
  resource_lock_fail(std::string resource, const std::string& message)
      : std::runtime_error(message), resource_(std::move(resource)) {}
  /// The name of the resource; lives as long as this object.
  const std::string& resource() const { return resource_; }

 private:
  std::string resource_;
};

/// A lock was given back that is not held.
class no_resource_lock : public std::runtime_error {
 public:
  /// `resource` is the name of what is locked, `message` what what() gives.
  no_resource_lock(std::string resource, const std::string& message)
      : std::runtime_error(message), resource_(std::move(resource)) {}
  /// The name of the resource; lives as long as this object.
  const std::string& resource() const { return resource_; }

 private:
  std::string resource_;
};

}  // namespace esd

#endif  // ESD_PREFS_RESOURCE_LOCK_ERROR_H_

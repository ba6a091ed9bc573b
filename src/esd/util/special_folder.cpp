#include "esd/util/special_folder.h"

#include <iterator>
#include <optional>

#include "platform/folders.h"

namespace esd {
namespace {

using platform::FolderDomain;

struct Kind {
  platform::FolderType type;
  FolderDomain domain;
};

// The place in the table is the kind.
constexpr Kind kKinds[] = {
    {platform::kPerUserTemporaryFolderType, FolderDomain::kUser},     // 0
    {platform::kUserTemporaryFolderType, FolderDomain::kUser},        // 1
    {platform::kUserTemporaryFolderType, FolderDomain::kLocal},       // 2
    {platform::kDesktopFolderType, FolderDomain::kUser},              // 3
    {platform::kDocumentsFolderType, FolderDomain::kUser},            // 4
    {platform::kCachedDataFolderType, FolderDomain::kUser},           // 5
    {platform::kPreferencesFolderType, FolderDomain::kUser},          // 6
    {platform::kApplicationSupportFolderType, FolderDomain::kUser},   // 7
    {platform::kApplicationSupportFolderType, FolderDomain::kLocal},  // 8
    {platform::kApplicationSupportFolderType, FolderDomain::kLocal},  // 9
    {platform::kFontsFolderType, FolderDomain::kLocal},               // 10
    {platform::kSystemFolderType, FolderDomain::kLocal},              // 11
    {platform::kSystemFolderType, FolderDomain::kLocal},              // 12
    {platform::kApplicationSupportFolderType, FolderDomain::kLocal},  // 13
};
static_assert(std::size(kKinds) == kRoot);

}  // namespace

bool GetSpecialFolder(unsigned kind, std::string& path, bool create) {
  if (kind > kRoot) return false;
  if (kind == kRoot) {
    path = "/";
    return true;
  }
  std::optional<std::string> found =
      platform::FindFolder(kKinds[kind].domain, kKinds[kind].type, create);
  if (!found) return false;
  path = *std::move(found);
  return true;
}

}  // namespace esd

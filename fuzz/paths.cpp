// Any two texts as a folder and a name, a line each: what is joined comes apart again, and what was
// taken apart goes together. Both floors' helpers agree where they do the same.
#include "esd/util/path.h"

#include <algorithm>

#include "fuzz/fuzz.h"
#include "welko/path.h"

namespace {

using std::string;

void CheckParts(const string& path) {
  const string folder = esd::GetParentFolder(path), name = esd::GetLastPathComponent(path);
  CHECK(folder == welko::WithoutLastPathComponent(path));
  CHECK(name == welko::LastPathComponent(path));
  CHECK(name.find('/') == string::npos && path.ends_with(name));
  if (!folder.empty() && path.find("//") == string::npos) {
    CHECK(esd::JoinPath(folder, name) == path);
  }
  const string stem = welko::WithoutPathExtension(path), extension = welko::PathExtension(path);
  CHECK(stem + extension == path);
  CHECK(extension.rfind('.') == (extension.empty() ? string::npos : 0));
  CHECK(extension.size() < name.size() || extension.empty());
}

void CheckJoined(const string& folder, const string& name) {
  const string joined = esd::JoinPath(folder, name);
  CHECK(joined == esd::JoinPath(folder, "/" + name) || name.starts_with('/'));
  if (name.find('/') == string::npos) {
    CHECK(esd::GetLastPathComponent(joined) == name);
    const string parent = esd::GetParentFolder(joined);
    CHECK(parent == folder || (parent + "/" == folder && !folder.empty()));
  }
  string appended = folder;
  welko::AppendPathComponent(appended, name);
  if (folder.empty() || name.empty()) {
    CHECK(appended == folder);
  } else {
    CHECK(appended ==
          esd::JoinPath(folder, name.substr(std::min(name.find_first_not_of('/'), name.size()))));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view input = fuzz::Text(data, size);
  const string folder(fuzz::TakeLine(input)), name(input);
  CheckParts(folder);
  CheckParts(name);
  if (!folder.empty()) CheckJoined(folder, name);
  return 0;
}

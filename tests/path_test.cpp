#include "esd/util/path.h"

#include "tests/test_support.h"
#include "welko/path.h"

namespace {

TEST(Paths, JoinDropsOneLeadingSlashAndAppendDropsAll) {
  constexpr const char* kCases[][4] = {{"/a/", "//b", "/a//b", "/a/b"},
                                       {"/a", "//", "/a//", "/a/"},
                                       {"/a", "", "/a/", "/a"},
                                       {"", "b", "/b", ""},
                                       {"/", "b/", "/b/", "/b/"}};
  for (const auto& [path, name, joined, appended] : kCases) {
    EXPECT_EQ(esd::JoinPath(path, name), joined);
    std::string result = path;
    welko::AppendPathComponent(result, name);
    EXPECT_EQ(result, appended) << path << " and " << name;
  }
}

TEST(Paths, SplitAtTheLastSlashAndAtTheLastDotOfTheName) {
  constexpr const char* kCases[][3] = {
      {"x.", "", "."}, {"/x", "/", ""}, {"/a.b/.log", "/a.b", ""}, {"a//.x.1.log", "a/", ".log"}};
  for (const auto& [path, parent, extension] : kCases) {
    EXPECT_EQ(esd::GetParentFolder(path), parent);
    EXPECT_EQ(welko::WithoutLastPathComponent(path), parent);
    EXPECT_EQ(welko::PathExtension(path), extension);
  }
}

}  // namespace

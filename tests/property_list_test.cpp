// Which property lists are read at all, on either side of the seam.

#include <sys/stat.h>

#include "platform/bundle.h"
#include "tests/test_support.h"

using PropertyList = test::TreeTest;

TEST_F(PropertyList, IsAFileOfAtMostOneMebibyte) {
  const test::fs::path list = top / "Some.plist";
  const auto read = [&] { return platform::ReadPropertyListString(list, "K").value_or("none"); };
  const std::string text = R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0">)"
                           "<dict><key>K</key><string>text</string></dict></plist>";
  const std::size_t limit = 1024 * 1024;
  for (const std::size_t size : {limit, limit + 1}) {
    test::WriteFile(list, text + std::string(size - text.size(), '\n'));
    EXPECT_EQ(read(), size <= limit ? "text" : "none") << size << " bytes";
  }
  test::fs::remove(list);
  ASSERT_EQ(mkfifo(list.c_str(), 0666), 0);
  test::ExpectInChild([&] { EXPECT_EQ(read(), "none") << "a FIFO"; });
}

// The program's main on a system that runs out of memory when it is to start the notifier.

#include <cstdio>
#include <new>

#include "platform/application.h"
#include "tests/test_support.h"

int WakerlyMain(int argc, char** argv);

bool platform::LaunchApplication(const std::string&) { throw std::bad_alloc(); }

using MainTest = test::TreeTest;

TEST_F(MainTest, AnExceptionThatNobodyCatchesEndsTheRunWithStatus1AndOneLine) {
  test::fs::create_directories(root / "Library/Application Support");
  const test::fs::path said = top / "stderr";
  const int status = test::InChild([&] {
    char program[] = "wakerly", mode[] = "-mode=scheduled", *arguments[] = {program, mode, nullptr};
    return freopen(said.c_str(), "w", stderr) != nullptr ? WakerlyMain(2, arguments) : 126;
  });
  EXPECT_EQ(status, 1);
  EXPECT_EQ(test::ReadFile(said), "wakerly: the run ends early: std::bad_alloc\n");
}

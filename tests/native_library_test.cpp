#include "welko/native_library.h"

#include <dlfcn.h>

#include "tests/test_support.h"
#include "welko/support_log.h"

namespace {

std::string g_reported;
void Hook(int level, const char* logger, const char* module, const char* file, const char* function,
          const char* format, ...) {
  g_reported = std::to_string(level) + logger + module + file + function + format;
}

struct Sink : welko::SupportLogSink {
  void Log(int level, const char* file, const char* module, const char* format, ...) override {
    g_reported = std::to_string(level) + file + module + format;
  }
};

TEST(NativeLibrary, LoadsAfterAFailureAndThenKeepsTheFirstLibrary) {
  welko::NativeLibrary library;
  EXPECT_FALSE(library.Load("/nowhere/library.so"));
  EXPECT_EQ(library.GetSymbol("dlopen"), nullptr);  // no handle does not mean the whole program
  for (int i = 0; i < 2; ++i) EXPECT_TRUE(library.Load(CLIENT_LIBRARY));
  dlclose(library.handle());  // opened once only: that unloads it
  EXPECT_EQ(dlopen(CLIENT_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr);
}

TEST(NativeLibrary, ReportsAFailureToTheHookElseToTheSink) {
  Sink sink;
  welko::g_support_log_sink = &sink;
  EXPECT_FALSE(welko::NativeLibrary().Load("/nowhere"));
  EXPECT_EQ(g_reported, "40NativeLibraryUnable to load library at path: %s. Error: %s");
  welko::g_support_log_hook = &Hook;
  EXPECT_FALSE(welko::NativeLibrary().Load("/nowhere"));
  EXPECT_EQ(g_reported, "40WelkoUtilsNativeLibraryUnable to load library at path: %s. Error: %s");
}

}  // namespace

#include "welko/native_library.h"

#include <dlfcn.h>

#include <cstdarg>

#include "tests/run_support.h"
#include "welko/support_log.h"

namespace test {
namespace {

using welko::NativeLibrary;

std::string g_reported;  // a line for each thing that the support log was told

void Hook(int level, const char* logger, const char* module, const char* file, const char* function,
          const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const char* const path = va_arg(arguments, const char*);
  g_reported +=
      Text({"hook", "level " + std::to_string(level), logger, module, std::string("file ") + file,
            std::string("function ") + function, format, path, va_arg(arguments, const char*)});
  va_end(arguments);
}

struct Sink : welko::SupportLogSink {
  void Log(int level, const char* file, const char* module, const char* format, ...) override {
    std::va_list arguments;
    va_start(arguments, format);
    const char* const path = va_arg(arguments, const char*);
    g_reported += Text({"sink", "level " + std::to_string(level), std::string("file ") + file,
                        module, format, path, va_arg(arguments, const char*)});
    va_end(arguments);
  }
};

TEST_F(RunTest, NativeLibraryKeepsTheFirstLibraryThatItCouldLoad) {
  InstallLibrary();
  ExpectInChild([&] {
    NativeLibrary native;
    EXPECT_EQ(native.GetSymbol("malloc"), nullptr) << "found, without a library, somewhere else";
    EXPECT_FALSE(native.Load(top / "missing"));
    EXPECT_EQ(native.handle(), nullptr) << "after a load that failed";
    ASSERT_TRUE(native.Load(library));
    void* const first = native.handle();
    EXPECT_NE(native.GetSymbol("Vantre_KD_ReleaseRef"), nullptr);
    EXPECT_EQ(native.GetSymbol("Vantre_KD_Release"), nullptr);
    EXPECT_TRUE(native.Load(CLIENT_LIBRARY));
    EXPECT_TRUE(native.Load(top / "missing"));
    EXPECT_EQ(native.handle(), first) << "after two more loads";
    EXPECT_EQ(dlopen(CLIENT_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr) << "loaded nevertheless";
    dlclose(first);
  });
}

// The hook comes before the sink; without either nothing is reported.
TEST_F(RunTest, NativeLibraryReportsAFailureToTheSupportLog) {
  ExpectInChild([&] {
    const std::string path = top / "missing.dylib";
    const std::string format = "Unable to load library at path: %s. Error: %s";
    const std::string error = path + ": cannot open shared object file: No such file or directory";
    Sink sink;
    EXPECT_FALSE(NativeLibrary().Load(path));
    welko::g_support_log_sink = &sink;
    EXPECT_FALSE(NativeLibrary().Load(path));
    EXPECT_EQ(g_reported,
              Text({"sink", "level 40", "file ", "NativeLibrary", format, path, error}));
    g_reported.clear();
    welko::g_support_log_hook = Hook;
    EXPECT_FALSE(NativeLibrary().Load(path));
    EXPECT_EQ(g_reported, Text({"hook", "level 40", "WelkoUtils", "NativeLibrary", "file ",
                                "function ", format, path, error}));
  });
}

}  // namespace
}  // namespace test

// What the macOS side of the seam asks of the system, to the argument.

#include <gmock/gmock.h>
#include <mach-o/fat.h>
#include <mach-o/loader.h>

#include <functional>

#include "platform/application.h"
#include "platform/bundle.h"
#include "platform/console_user.h"
#include "platform/folders.h"
#include "platform/languages.h"
#include "platform/named_recursive_lock.h"
#include "platform/program_file.h"
#include "platform/system_version.h"
#include "tests/macos/recording_system.h"
#include "tests/test_support.h"

namespace test {
namespace {

using platform::FolderDomain;
using platform::kUtilitiesFolderType;
using testing::ElementsAre;

struct Recordings : TreeTest {
  Recordings() { system = {}; }
  RecordingSystem& system = System();
};

TEST_F(Recordings, LaunchServicesOpenANewInstanceAsynchronouslyAndTheBundleOfARefusedExecutable) {
  const std::string bundle = top / "Some.app", program = bundle + "/Contents/MacOS/Some";
  const std::string stray = top / "Contents/MacOS/Stray";
  const auto calls = [](const std::string& path) {
    return "FSPathMakeRef " + path + " \nLSOpenApplication " + path +
           " version=0 flags=90001 refcon=0 environment=0 argv=0 event=0 process=0\n";
  };
  for (const std::string& path : {program, stray}) WriteFile(path, "");
  const std::tuple<std::string, Lines, bool, std::string> rows[] = {
      {program, {}, true, calls(program)},
      {program, {program}, true, calls(program) + calls(bundle)},
      {program, {program, bundle}, false, calls(program) + calls(bundle)},
      {bundle, {bundle}, false, calls(bundle)},
      {stray, {stray}, false, calls(stray)},
      {top / "none", {}, false, "FSPathMakeRef " + (top / "none").string() + " \n"}};
  for (const auto& [path, refused, started, asked] : rows) {
    system = {};
    for (const std::string& each : refused) system.open_status[each] = -10810;
    EXPECT_EQ(platform::LaunchApplication(path), started) << path << ", refused: " << Text(refused);
    EXPECT_EQ(Text(system.calls), asked) << path << ", refused: " << Text(refused);
  }
}

// There is no pool around a run.
TEST_F(Recordings, EveryCallGivesBackTheObjectsThatItMakes) {
  WriteFile(top / "Some.plist", "<plist><dict><key>K</key><string>text</string></dict></plist>");
  WriteFile(top / "Some.app/Contents/MacOS/Some", "");
  const std::pair<const char*, std::function<void()>> rows[] = {
      {"StandardizePath", [] { platform::StandardizePath("/a//./b/../c/"); }},
      {"MainExecutablePath", [] { platform::MainExecutablePath(); }},
      {"MainBundlePath", [] { platform::MainBundlePath(); }},
      {"ReadPropertyListString",
       [&] { platform::ReadPropertyListString(top / "Some.plist", "K"); }},
      {"PreferredLanguages", [] { platform::PreferredLanguages(); }},
      {"CurrentLocaleIdentifier", [] { platform::CurrentLocaleIdentifier(); }},
      {"NamedRecursiveLock", [] { platform::NamedRecursiveLock("A lock with a name of its own"); }},
      {"FindFolder",
       [] { platform::FindFolder(FolderDomain::kLocal, kUtilitiesFolderType, true); }},
      {"HomeFolder", [] { platform::HomeFolder(); }},
      {"FindConsoleUser", [] { platform::FindConsoleUser(); }},
      {"LaunchApplication", [&] { platform::LaunchApplication(top / "Some.app"); }}};
  system.console_user = {501, 20};
  ExpectInChild([&] {  // Foundation keeps some of what it finds
    ObjectsAlive();
    for (const auto& [name, call] : rows) {
      call();  // what is kept from the first call on
      const std::size_t before = ObjectsAlive();
      call();
      EXPECT_EQ(ObjectsAlive(), before) << "objects after " << name << ", and before it";
    }
  });
}

TEST_F(Recordings, FileManagerIsAskedForTheFolderAndAgainForALongerPathUnlessItsSizeIsGiven) {
  const std::string find = "FSFindFolder -32765 uti\xC4 1", letters(200, 'a');
  EXPECT_FALSE(platform::FindFolder(FolderDomain::kUser, platform::kFontsFolderType, false));
  const fs::path deep = top / letters / letters / letters / letters / letters;
  setenv("WAKERLY_ROOT", deep.c_str(), 1);
  EXPECT_EQ(platform::FindFolder(FolderDomain::kLocal, kUtilitiesFolderType, true),
            deep / "Applications/Utilities");
  EXPECT_FALSE(platform::FindFolder(FolderDomain::kLocal, kUtilitiesFolderType, true, 300));
  EXPECT_THAT(system.calls, ElementsAre("FSFindFolder -32763 font 0", find, "FSRefMakePath 256",
                                        "FSRefMakePath 512", "FSRefMakePath 1024",
                                        "FSRefMakePath 2048",  // of any size
                                        find, "FSRefMakePath 300"));
}

TEST_F(Recordings, PathsThatAreNotUtf8AreNone) {
  setenv("WAKERLY_ROOT", (top / "\xFF").c_str(), 1);
  EXPECT_FALSE(platform::FindFolder(FolderDomain::kLocal, kUtilitiesFolderType, true));
}

TEST_F(Recordings, TheConsoleUserIsTheOneThatTheSystemsOwnStoreNames) {
  EXPECT_FALSE(platform::FindConsoleUser());
  EXPECT_THAT(system.calls, ElementsAre("SCDynamicStoreCopyConsoleUser 0"));
  system.console_user = {501, 20};
  const auto user = platform::FindConsoleUser();
  ASSERT_TRUE(user);
  EXPECT_EQ(user->uid, 501U);
  EXPECT_EQ(user->gid, 20U);
}

TEST_F(Recordings, TheVersionIsTheProcessInformationsOrAllThreeNumbersOfGestalt) {
  const auto version = [] {
    const auto found = platform::FindSystemVersion().value_or(platform::SystemVersion{});
    return std::vector{found.major_number, found.minor_number, found.patch_number};
  };
  system.gestalt = {{"sys1", 10}, {"sys2", 6}};
  EXPECT_FALSE(platform::FindSystemVersion());
  system.gestalt["sys3"] = 8;
  EXPECT_THAT(version(), ElementsAre(10, 6, 8));
  ExpectInChild([&] {  // a method that is added stays
    AddOperatingSystemVersion();
    EXPECT_THAT(version(), ElementsAre(14, 2, 1));
  });
}

template <typename Record>
std::string Bytes(const Record& record) {
  return {reinterpret_cast<const char*>(&record), sizeof record};
}

std::string ThinFile(std::uint32_t type, cpu_type_t processor) {
  return Bytes(mach_header{MH_MAGIC_64, processor, 0, type, 0, 0, 0});
}

template <typename Record>
std::string FatFile(std::uint32_t magic, const std::vector<cpu_type_t>& processors) {
  const auto big_endian = [](std::uint32_t number) { return __builtin_bswap32(number); };
  const auto count = static_cast<std::uint32_t>(processors.size());
  std::string file = Bytes(fat_header{big_endian(magic), big_endian(count)});
  for (const cpu_type_t processor : processors) {
    Record record{};
    record.cputype = static_cast<cpu_type_t>(big_endian(static_cast<std::uint32_t>(processor)));
    file += Bytes(record);
  }
  return file;
}

TEST_F(Recordings, AProgramFitsWhereTheMachineHasAProcessorForItAndALibraryWhereTheProgramHas) {
  constexpr cpu_type_t kArm = CPU_TYPE_ARM64, kIntel = CPU_TYPE_X86_64, kOld = CPU_TYPE_I386;
  const std::string both = FatFile<fat_arch>(FAT_MAGIC, {kIntel, kArm});
  struct Row {
    const char* name;
    std::string file;
    cpu_type_t own;
    const char *runs, *loads;
  };
  const Row rows[] = {
      {"program", ThinFile(MH_EXECUTE, kArm), kArm, "fits", "none"},
      {"library", ThinFile(MH_DYLIB, kArm), kArm, "none", "fits"},
      {"bundle", ThinFile(MH_BUNDLE, kIntel), kIntel, "none", "fits"},
      {"for two, by Intel", both, kIntel, "fits", "fits"},
      {"for two, by ARM", both, kArm, "fits", "fits"},
      {"64-bit records", FatFile<fat_arch_64>(FAT_MAGIC_64, {kOld, kArm}), kArm, "fits", "fits"},
      {"for two others", FatFile<fat_arch>(FAT_MAGIC, {kOld, 18}), kArm, "other", "other"},
      {"of old", ThinFile(MH_EXECUTE, kOld), kIntel, "other", "none"},
      {"translator missing", ThinFile(MH_EXECUTE, kIntel), kArm, "other", "none"},
      {"by a translated program", ThinFile(MH_EXECUTE, kArm), kIntel, "fits", "none"},
      {"into a translated program", ThinFile(MH_DYLIB, kArm), kIntel, "none", "other"},
      {"Java", "\xCA\xFE\xBA\xBE" + std::string(3, '\0') + std::string(99, '4'), kArm, "none",
       "none"},
      {"torn", both.substr(0, 10), kArm, "none", "none"},
      {"nothing", "", kArm, "none", "none"}};
  const std::string file = top / "file";
  const std::map<platform::ProgramFit, std::string> words = {
      {platform::ProgramFit::kFits, "fits"},
      {platform::ProgramFit::kNoProgram, "none"},
      {platform::ProgramFit::kOtherProcessor, "other"}};
  system.is_arm64 = true;
  for (const Row& row : rows) {
    WriteFile(file, row.file);
    system.own_processor = row.own;
    EXPECT_EQ(words.at(platform::FitToRun(file)), row.runs) << "to run: " << row.name;
    EXPECT_EQ(words.at(platform::FitToLoad(file)), row.loads) << "to load: " << row.name;
  }
  system = {};
  system.own_processor = kIntel;
  WriteFile(file, ThinFile(MH_EXECUTE, kArm));
  EXPECT_EQ(words.at(platform::FitToRun(file)), "other") << "on a machine for Intel";
}

}  // namespace
}  // namespace test

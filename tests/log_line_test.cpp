#include "welko/log_line.h"

#include "tests/log_support.h"
#include "welko/log_redaction.h"

namespace test {
namespace {

using LogLine = TreeTest;

std::string WrittenAs(const std::string& message) {
  const std::string line =
      welko::FormatLogLine(0, 30, {}, "", message, "|", welko::CredentialKeys());
  return line.substr(line.rfind('|') + 1);
}

constexpr const char* kSkipped = "Found access/device token. Log skipped.";

TEST_F(LogLine, CarriesLocalTimeLevelContextThreadAndMessage) {
  SetTimeZone("EST5");
  EXPECT_EQ(welko::FormatLogLine(1367421630007, 60, {"a", nullptr, "c"}, "77", "text", " | ", {}),
            "05/01/13 10:20:30:007 | [FATAL] | a |  | c |  |  |  | 77 | text");
}

TEST_F(LogLine, IsAWarningWhereItsMessageHeldAToken) {
  const std::string message = "<User>eyJa.eyJb</User>";
  EXPECT_EQ(welko::FormatLogLine(999, 10, {}, "77", message, " | ", {}).substr(17),
            ":999 | [WARN] |  |  |  |  |  |  | 77 | " + std::string(kSkipped));
}

// All in one message, for each mask changes the length of what stands before the next key's turn.
TEST_F(LogLine, MasksTheElementsOfAllKeys) {
  std::string message, masked;
  for (const std::string key : {"ProxyUserName", "Proxy-User", "ProxyUser", "User", "UserName",
                                "Proxy-Password", "ProxyPassword", "PASSWORD"}) {
    message += "<" + key + ">" + key.substr(3) + "</" + key + ">\n";
    masked += "<" + key + ">****</" + key + ">\n";
  }
  EXPECT_EQ(WrittenAs(message), masked);
}

TEST_F(LogLine, HidesTokensAndTheFirstElementOfAKey) {
  const struct {
    const char *name, *message, *written;
  } rows[] = {{"token over two lines", "eyJ\nand .eyJ", kSkipped},
              {"second part of a token first", ".eyJ b eyJ", ".eyJ b eyJ"},
              {"two elements", "<user>a</User><user>b</user>", "<user>****</User><user>b</user>"},
              {"empty element", "<password></password>", "<password></password>"},
              {"closing tag first", "</user><user>bob</user>", "</user><user>bob</user>"},
              {"no closing tag", "<user>bob", "<user>bob"},
              {"Kelvin sign, whose lower case has fewer bytes",
               "\xE2\x84\xAA<User>\xC3\x84\xFF\n</User>!", "\xE2\x84\xAA<User>****</User>!"}};
  for (const auto& row : rows) EXPECT_EQ(WrittenAs(row.message), row.written) << row.name;
}

}  // namespace
}  // namespace test

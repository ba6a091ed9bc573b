#include "welko/log_redaction.h"

#include <gtest/gtest.h>

namespace {

TEST(HoldsToken, WantsASecondPartBehindTheFirst) {
  const std::pair<const char*, bool> rows[] = {{"x eyJabc.eyJdef", true}, {".eyJ.eyJ", true},
                                               {"eyJ\nand .eyJ", true},   {".eyJ b eyJ", false},
                                               {"eyJa. eyJ", false},      {"eyJa.EyJd", false}};
  for (const auto& [message, holds] : rows) EXPECT_EQ(welko::HoldsToken(message), holds) << message;
}

TEST(MaskCredentials, HidesTheFirstElementOfEachKeyOnly) {
  std::string all, all_masked;  // each replacement changes the length before the next key's turn
  for (const std::string key : {"ProxyUserName", "Proxy-User", "ProxyUser", "User", "UserName",
                                "Proxy-Password", "ProxyPassword", "PASSWORD"}) {
    all += "<" + key + ">" + key.substr(3) + "</" + key + ">";
    all_masked += "<" + key + ">****</" + key + ">";
  }
  const std::pair<std::string, std::string> rows[] = {
      {all, all_masked},
      {"<user>a</User><user>b</user>", "<user>****</User><user>b</user>"},
      {"<password></password>", "<password></password>"},
      {"</user><user>bob</user>", "</user><user>bob</user>"},
      {"<user>bob", "<user>bob"},
      {"<userid>5</userid> <user>", "<userid>5</userid> <user>"},
      // The Kelvin sign, whose lower case has fewer bytes.
      {"\xE2\x84\xAA<User>\xC3\x84\xFF\n</User>!", "\xE2\x84\xAA<User>****</User>!"},
      {"<user>who <password>p</password></user>", "<user>****</user>"}};
  for (auto [message, masked] : rows) {
    welko::MaskCredentials(message);
    EXPECT_EQ(message, masked);
  }
}

}  // namespace

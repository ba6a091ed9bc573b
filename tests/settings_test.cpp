// Where each value that a run finds comes from, what is shown of it, and what a save makes of it.
#include "ctl/settings.h"

#include "esd/xml/save_effect.h"
#include "tests/test_support.h"
#include "welko/log_line.h"
#include "welko/log_redaction.h"

namespace test {
namespace {

using ctl::Settings, ctl::Source;

struct SettingsTest : TreeTest {
  ctl::PrefsView View(const std::string& entries) const {
    WriteFile(top / "file", "<Preferences>" + entries + "</Preferences>");
    return ctl::PrefsView(top / "file");
  }
};

// The texts of a file say which keys it holds, whatever becomes of them.
TEST_F(SettingsTest, HaveTheirSource) {
  const ctl::PrefsView view =
      View("<Number>3</Number><Bad>x</Bad><Empty/><Twice>1</Twice><Twice>2</Twice>");
  Settings kept(view, Source::kAdministrator), replaced(view, Source::kUser),
      forgotten(view, Source::kUser);
  replaced.Replace("Number", "4", Source::kLaunchAgent);
  replaced.Replace("Missing", "x", Source::kLaunchAgent);
  forgotten.ForgetFile(Source::kUninstallStamp);
  forgotten.Replace("Bad", "5", Source::kLaunchAgent);
  const std::tuple<const char*, std::string, std::string, std::string> rows[] = {
      {"Number", "Number = 3 (administrator)", "Number = 4 (launch-agent)",
       "Number = 7 (uninstall-stamp)"},
      {"Bad", "Bad = \"x\" (administrator)", "Bad = \"x\" (user)", "Bad = 5 (launch-agent)"},
      {"Empty", "Empty = 7 (default)", "Empty = 7 (default)", "Empty = 7 (default)"},
      {"Missing", "Missing = 7 (default)", "Missing = \"x\" (launch-agent)",
       "Missing = 7 (default)"},
      {"Twice", "Twice = 1 (administrator)", "Twice = 1 (user)", "Twice = 7 (uninstall-stamp)"}};
  for (const auto& [key, from_file, from_replacement, without_file] : rows) {
    EXPECT_EQ(Describe(kept.Read(key, 7)), from_file);
    EXPECT_EQ(Describe(replaced.Read(key, 7)), from_replacement) << "replaced";
    EXPECT_EQ(Describe(forgotten.Read(key, 7)), without_file) << "forgotten";
  }
}

TEST_F(SettingsTest, OfMapsHaveTheirSourceToo) {
  const std::string one = R"(<MapPrefEntry MapPrefKey="a">1</MapPrefEntry>)";
  const ctl::PrefsView view =
      View("<Map>" + one + "</Map><Bad>" + one + "<MapPrefEntry>1</MapPrefEntry></Bad><None/>");
  Settings settings(view, Source::kUser);
  const auto found = [&](const char* key) {
    const auto map = settings.ReadMap<bool>(key);
    return (map.value ? std::to_string(map.value->size()) : "invalid") + ", " + NameOf(map.source);
  };
  EXPECT_EQ(found("Map"), "1, user");
  EXPECT_EQ(found("Bad"), "invalid, user");
  EXPECT_EQ(found("None"), "0, default");
  settings.ForgetFile(Source::kUninstallStamp);
  EXPECT_EQ(found("Map"), "0, uninstall-stamp");
  EXPECT_EQ(found("Bad"), "0, uninstall-stamp");
  EXPECT_EQ(found("None") + "; " + found("Missing"), "0, default; 0, default");
}

TEST_F(SettingsTest, AreListedOnceInTheOrderOfReadingWithNoSecret) {
  const ctl::PrefsView view = View("<Password>secret</Password><Level>3</Level>");
  Settings settings(view, Source::kUser);
  settings.Read<std::string>("Password", "");
  settings.Read("Level", 0);
  settings.Read<std::string>("Level", "");
  settings.Read("ProxyUser", true);
  settings.Read("Password", 0);
  std::string text = ToJson(settings.list());
  text.erase(std::remove_if(text.begin(), text.end(), ::isspace), text.end());
  EXPECT_EQ(text, R"([{"key":"Password","value":"****","source":"user"},)"
                  R"({"key":"Level","value":3,"source":"user"},)"
                  R"({"key":"ProxyUser","value":true,"source":"default"}])");
  EXPECT_EQ(Describe(settings.Read("Password", 0)), "Password = \"****\" (user)");
}

// As the log has it where it shows the element.
TEST(ShownValue, HidesWhatTheLogHides) {
  constexpr const char* kRows[][3] = {{"Password", "secret", "****"},
                                      {"proxy-user", "a</b>", "****"},
                                      {"User", "", ""},
                                      {"Users", "ann", "ann"},
                                      {"Any", "<user>ann</user>, <PASSWORD>x</password>",
                                       "<user>****</user>, <PASSWORD>****</password>"},
                                      {"Any", "</user>ann<user>", "</user>ann<user>"},
                                      {"eyJ", "a.eyJ", "****"},
                                      {"Any", "eyJ.eyJ", "****"},
                                      {"Any", ".eyJeyJ", ".eyJeyJ"}};
  for (const auto& [key, value, shown] : kRows) {
    const std::string opening = "<" + std::string(key) + ">",
                      closing = "</" + std::string(key) + ">";
    EXPECT_EQ(welko::RedactedValue(key, value), shown) << opening << value;
    const Lines line = {welko::FormatLogLine(0, 30, {}, "1", opening + value + closing, " | ",
                                             welko::CredentialKeys())};
    const bool is_dropped = line[0].find("Log skipped") != std::string::npos;
    EXPECT_EQ(is_dropped ? "****" : Messages(line)[0],
              is_dropped ? shown : opening + shown + closing)
        << "the log's line of " << opening << value;
  }
}

TEST(ShownValue, OfAMapHidesWhatEitherKeyHides) {
  const std::map<std::string, std::string> map = {{"a", "b"}, {"user", "c"}, {"x", "eyJ.eyJ"}};
  const auto text = [&](const char* key) {
    std::string shown;
    const ctl::Value value = ctl::Shown(key, map);
    for (const auto& member : std::get<ctl::Value::Object>(value.content())) {
      shown += member.name + "=" + std::get<std::string>(member.value.content()) + " ";
    }
    return shown;
  };
  EXPECT_EQ(text("Any"), "a=b user=**** x=**** ");
  EXPECT_EQ(text("Password"), "****=**** ****=**** ****=**** ");
}

TEST(SaveEffect, IsWhatComesBackFromTheWriter) {
  using esd::SaveEffect;
  const std::tuple<SaveEffect, const char*> rows[] = {
      {SaveEffect::kNone, "<a>x&amp;&lt;&gt;&quot;&apos;]]&gt;\t\n </a>"},
      {SaveEffect::kNone, "<a k='v' b='&gt;'>\n  <b>1</b><b/>\n</a>"},
      {SaveEffect::kNone, "<a>before<b/>behind</a>"},
      {SaveEffect::kNone, "<a><b>1</b></a>"},
      {SaveEffect::kChanges, "<a>&#13;</a>"},
      {SaveEffect::kChanges, "<a><b><c k='&#9;'/></b></a>"},
      {SaveEffect::kChanges, "<a k='&#10;'/>"},
      {SaveEffect::kBreaks, "<a k='&amp;'/>"},
      {SaveEffect::kBreaks, "<a><b><c k='&quot;'/></b></a>"},
      {SaveEffect::kBreaks, "<a k='&lt;'/>"},
      {SaveEffect::kChanges, "<a k='&quot; b=&quot;'/>"},
      {SaveEffect::kChanges, "<a k='&amp;amp;'/>"}};
  for (const auto& [effect, text] : rows) {
    esd::ExpatDOMBuilder<esd::XMLDocumentNode> builder;
    ASSERT_TRUE(builder.Create(nullptr, nullptr) && builder.ParseText(text)) << text;
    EXPECT_EQ(esd::EffectOfSave(*builder.GetRoot()), effect) << "the document " << text;
    EXPECT_EQ(esd::EffectOfSave(*builder.GetRoot()->children().front()), effect) << text;
  }
}

}  // namespace
}  // namespace test

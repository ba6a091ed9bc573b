#include <sstream>

#include "esd/xml/expat_dom_builder.h"
#include "esd/xml/xml_writer.h"
#include "tests/test_support.h"

namespace {

const std::string kHead = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n";

struct XmlTest : test::TreeTest {
  /// What a file that holds `text`, which is well-formed or not, is written as.
  std::string Saved(const std::string& text, bool well_formed = true) {
    test::WriteFile(top / "file", text);
    EXPECT_TRUE(builder.Create(nullptr, nullptr));
    EXPECT_EQ(builder.ParseFile(top / "file", !well_formed), well_formed) << text.substr(0, 99);
    std::ostringstream stream;
    esd::WriteXMLNode(stream, *builder.GetRoot());
    return stream.str();
  }
  esd::ExpatDOMBuilder<esd::XMLDocumentNode> builder;
};

TEST_F(XmlTest, SavesWhatItLoadedAndTheSecondTimeTheSameBytes) {
  constexpr const char* kCases[][2] = {
      {"\xEF\xBB\xBF\r\n<a>\r\n</a>", "<a>\n</a>"},
      {"<a>\n<b> x <c/> y </b> z <b/>\n</a>", "<a>\n<b> x <c></c>\n</b>\n<b></b>\n</a>"},
      {"<a><![CDATA[<&>]]>'&#34;&amp;lt;</a>", "<a>&lt;&amp;&gt;&apos;&quot;&amp;lt;</a>"},
      {"<a version='' B = \"'\" a='&#xE9;' />", "<a B=\"'\" a=\"\xC3\xA9\" version=\"\"></a>"},
      {"<!DOCTYPE a [<!ENTITY e 'v'>]><!--c--><a><?p i?>x<!--c-->y&e;</a><!--d-->", "<a>xyv</a>"},
      {"<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9</a>", "<a>\xC3\xA9</a>"}};
  for (const auto& [text, saved] : kCases) {
    EXPECT_EQ(Saved(text), kHead + saved + "\n");
    EXPECT_EQ(Saved(kHead + saved + "\n"), kHead + saved + "\n");
  }
  for (const std::size_t size :
       {1024U, 1029U, 2048U}) {  // 1029: the end of a read cuts a character
    const std::string text = "<a>" + std::string(size - 9, 'x') + "\xC3\xA9</a>";
    EXPECT_EQ(Saved(text), kHead + text + "\n");
  }
  EXPECT_EQ(Saved("<?xml version='1.1'?><a/>").substr(0, 19), "<?xml version=\"1.1\"");
  EXPECT_EQ(Saved("<a k='&lt;&quot;&amp;'/>"), kHead + "<a k=\"<\"&\"></a>\n");  // not escaped
}

TEST_F(XmlTest, KeepsWhatStoodBeforeAnError) {
  constexpr const char* kCases[][2] = {
      {"<a k='1'>x<b>y</b>z<c>v", "<a k=\"1\">x<b>y</b>\n<c>v</c>\n</a>\n"},
      {"<a>x&e;</a>", "<a>x</a>\n"},
      {"<a k='1' k='2'/>", ""}};
  for (const auto& [text, kept] : kCases) EXPECT_EQ(Saved(text, false), kHead + kept);
}

TEST_F(XmlTest, ADeepDocumentIsReadWrittenAndDestroyed) {
  std::string text = kHead;
  for (int i = 1; i < 200'000; ++i) text += "<a>\n";
  text += "<a></a>\n";
  for (int i = 1; i < 200'000; ++i) text += "</a>\n";
  EXPECT_TRUE(Saved(text) == text);
}

}  // namespace

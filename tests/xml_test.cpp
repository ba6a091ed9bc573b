#include <gmock/gmock.h>

#include <climits>
#include <functional>
#include <sstream>

#include "esd/xml/expat_dom_builder.h"
#include "esd/xml/xml_search.h"
#include "esd/xml/xml_writer.h"
#include "tests/test_support.h"

namespace {

using Node = esd::XMLDocumentNode;
using Named = esd::NodeName_t<std::string, std::equal_to<std::string>>;

const std::string kHead = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n";

struct XmlFile : test::TreeTest {
  // What a file that holds `text` is written as.
  std::string Saved(const std::string& text) {
    test::WriteFile(top / "file", text);
    EXPECT_TRUE(builder.Create(nullptr, nullptr));
    EXPECT_TRUE(builder.ParseFile(top / "file", false));
    std::ostringstream stream;
    esd::WriteXMLNode(stream, *builder.GetRoot());
    return stream.str();
  }
  esd::ExpatDOMBuilder<Node> builder;
};

TEST_F(XmlFile, IsSavedAsItWasLoadedAndTheSecondTimeWithTheSameBytes) {
  constexpr const char* kRows[][2] = {
      {"\xEF\xBB\xBF\r\n<a>\r\n</a>", "<a>\n</a>"},
      {"<a>\n<b> x <c/> y </b> z <b/>\n</a>", "<a>\n<b> x <c></c>\n</b>\n<b></b>\n</a>"},
      {"<a><![CDATA[<&>]]>'&#34;&amp;lt;</a>", "<a>&lt;&amp;&gt;&apos;&quot;&amp;lt;</a>"},
      {"<a version='' B = \"'\" a='&#xE9;' />", "<a B=\"'\" a=\"\xC3\xA9\" version=\"\"></a>"},
      {"<!DOCTYPE a [<!ENTITY e 'v'>]><!--c--><a><?p i?>x<!--c-->y&e;</a><!--d-->", "<a>xyv</a>"},
      {"<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9</a>", "<a>\xC3\xA9</a>"}};
  for (const auto& [text, saved] : kRows) {
    EXPECT_EQ(Saved(text), kHead + saved + "\n") << "from " << text;
    EXPECT_EQ(Saved(kHead + saved + "\n"), kHead + saved + "\n") << "the second time";
  }
}

TEST_F(XmlFile, IsReadWholeWhereTheEndOfAReadCutsACharacter) {
  const std::string text = "<a>" + std::string(1020, 'x') + "\xC3\xA9</a>";
  EXPECT_EQ(Saved(text), kHead + text + "\n");
}

TEST_F(XmlFile, KeepsItsVersionAndDoesNotEscapeAttributes) {
  EXPECT_EQ(Saved("<?xml version='1.1'?><a k='&lt;&quot;&amp;'/>"),
            "<?xml version=\"1.1\" encoding=\"UTF-8\" ?>\n<a k=\"<\"&\"></a>\n");
}

TEST_F(XmlFile, IsNotEmptyWhereItCannotBeLookedAt) {
  EXPECT_TRUE(builder.Create(nullptr, nullptr));
  EXPECT_FALSE(builder.ParseFile(platform::FileDescriptor(INT_MAX), true)) << "no such descriptor";
  EXPECT_FALSE(builder.is_malformed());
}

TEST_F(XmlFile, MayBeDeep) {
  std::string text = kHead;
  for (int i = 1; i < 200'000; ++i) text += "<a>\n";
  text += "<a></a>\n";
  for (int i = 1; i < 200'000; ++i) text += "</a>\n";
  EXPECT_TRUE(Saved(text) == text) << "a document of 200,000 levels is saved with other bytes";
}

TEST_F(XmlFile, IsFlushedAfterEachLine) {
  struct Buffer : std::stringbuf {
    int sync() override { return at_flushes.push_back(str()), 0; }
    test::Lines at_flushes;
  } buffer;
  std::ostream stream(&buffer);
  Saved("<a><b/></a>");
  esd::WriteXMLNode(stream, *builder.GetRoot());
  EXPECT_THAT(buffer.at_flushes,
              testing::ElementsAre(kHead, kHead + "<a>\n", kHead + "<a>\n<b></b>\n",
                                   kHead + "<a>\n<b></b>\n</a>\n"));
}

TEST_F(XmlFile, IsSearchedLevelByLevelInItsOrderForExactNames) {
  Saved("<r><p><x>1</x><X/><p><x>deeper</x></p></p><q/><p><x>2</x><xx/><x>3</x></p></r>");
  const auto find_x = [](const Node* node) {
    return node->GetData() == "2" ? throw std::bad_cast() : Named("x")(node);
  };
  const esd::SearchResult all(builder.GetRoot());
  test::Lines texts;
  for (const Node* node : all.Children(Named("r")).Children(Named("p")).Children(find_x).nodes()) {
    texts.push_back(node->GetData());
  }
  EXPECT_EQ(test::Text(texts), "1\n3\n") << "2 cannot be told and is passed over";
}

}  // namespace

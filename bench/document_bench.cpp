// Loading and saving a preference file: ours, the parser and the write that it cannot do without,
// and other libraries' documents.
#include <Poco/DOM/AutoPtr.h>
#include <Poco/DOM/DOMParser.h>
#include <Poco/DOM/DOMWriter.h>
#include <Poco/DOM/Document.h>
#include <Poco/XML/XMLWriter.h>
#include <benchmark/benchmark.h>
#include <expat.h>
#include <fcntl.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <tinyxml2.h>
#include <unistd.h>

#include <fstream>
#include <pugixml.hpp>
#include <sstream>
#include <string>

#include "bench/support.h"
#include "esd/prefs/prefs_writer.h"

namespace {

#define SIZES Arg(bench::kSchemaEntries)->Arg(10'000)->Arg(100'000)

void CountBytes(benchmark::State& state, const std::string& path) {
  state.SetBytesProcessed(state.iterations() *
                          static_cast<std::int64_t>(std::filesystem::file_size(path)));
}

bool ReadWithExpat(const std::string& path) {
  constexpr int kBlock = 65536;
  XML_Parser parser = XML_ParserCreate(nullptr);
  XML_SetElementHandler(
      parser, [](void*, const char*, const char**) {}, [](void*, const char*) {});
  XML_SetCharacterDataHandler(parser, [](void*, const char*, int) {});
  const int file = open(path.c_str(), O_RDONLY);
  bool good = true;
  for (ssize_t size = 1; size > 0 && good;) {
    size = read(file, XML_GetBuffer(parser, kBlock), kBlock);
    good = XML_ParseBuffer(parser, static_cast<int>(size), size == 0) != 0;
  }
  close(file);
  XML_ParserFree(parser);
  return good;
}

template <typename Load>
void MeasureLoad(benchmark::State& state, Load load) {
  const bench::Scratch scratch;
  const std::string path = bench::MakePrefsFile(scratch, state.range(0));
  for (auto _ : state) {
    if (!load(path)) state.SkipWithError("the file is not read");
  }
  CountBytes(state, path);
}

bool LoadStore(const std::string& path) {
  const esd::PrefsWriter store(path, "Preferences");
  return true;
}

using PocoDocument = Poco::XML::AutoPtr<Poco::XML::Document>;

PocoDocument ParseWithPoco(const std::string& path) {
  // The pool of names does not grow, and throws when it is full. The shortest entry has 12 bytes.
  Poco::XML::DOMParser parser(std::filesystem::file_size(path) / 12 + 100);
  return parser.parse(path);
}

bool LoadPoco(const std::string& path) { return !ParseWithPoco(path).isNull(); }

bool LoadLibxml2(const std::string& path) {
  xmlDocPtr document = xmlReadFile(path.c_str(), nullptr, 0);
  xmlFreeDoc(document);
  return document != nullptr;
}

bool LoadTinyxml2(const std::string& path) {
  tinyxml2::XMLDocument document;
  return document.LoadFile(path.c_str()) == tinyxml2::XML_SUCCESS;
}

bool LoadPugixml(const std::string& path) {
  pugi::xml_document document;
  return document.load_file(path.c_str());
}

BENCHMARK_CAPTURE(MeasureLoad, limit, ReadWithExpat)->Name("load/limit")->SIZES;
BENCHMARK_CAPTURE(MeasureLoad, wakerly, LoadStore)->Name("load/wakerly")->SIZES;
BENCHMARK_CAPTURE(MeasureLoad, poco, LoadPoco)->Name("load/Poco")->SIZES;
BENCHMARK_CAPTURE(MeasureLoad, libxml2, LoadLibxml2)->Name("load/libxml2")->SIZES;
BENCHMARK_CAPTURE(MeasureLoad, tinyxml2, LoadTinyxml2)->Name("load/tinyxml2")->SIZES;
BENCHMARK_CAPTURE(MeasureLoad, pugixml, LoadPugixml)->Name("load/pugixml")->SIZES;

void SaveLimit(benchmark::State& state) {
  const bench::Scratch scratch;
  const std::string path = bench::MakePrefsFile(scratch, state.range(0));
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  const std::string bytes = text.str();
  for (auto _ : state) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
    benchmark::DoNotOptimize(write(file, bytes.data(), bytes.size()));
    close(file);
  }
  CountBytes(state, path);
}

void SaveStore(benchmark::State& state) {
  const bench::Scratch scratch;
  const std::string path = bench::MakePrefsFile(scratch, state.range(0));
  esd::PrefsWriter store(path, "Preferences");
  for (auto _ : state) {
    if (!store.Save()) state.SkipWithError("the file is not written");
  }
  CountBytes(state, path);
}

void SavePoco(benchmark::State& state) {
  const bench::Scratch scratch;
  const std::string path = bench::MakePrefsFile(scratch, state.range(0));
  const PocoDocument document = ParseWithPoco(path);
  Poco::XML::DOMWriter writer;
  writer.setOptions(Poco::XML::XMLWriter::WRITE_XML_DECLARATION);
  for (auto _ : state) writer.writeNode(path, document);
  CountBytes(state, path);
}

void SaveLibxml2(benchmark::State& state) {
  const bench::Scratch scratch;
  const std::string path = bench::MakePrefsFile(scratch, state.range(0));
  xmlDocPtr document = xmlReadFile(path.c_str(), nullptr, 0);
  for (auto _ : state) {
    if (xmlSaveFile(path.c_str(), document) < 0) state.SkipWithError("the file is not written");
  }
  CountBytes(state, path);
  xmlFreeDoc(document);
}

void SaveTinyxml2(benchmark::State& state) {
  const bench::Scratch scratch;
  const std::string path = bench::MakePrefsFile(scratch, state.range(0));
  tinyxml2::XMLDocument document;
  document.LoadFile(path.c_str());
  for (auto _ : state) {
    if (document.SaveFile(path.c_str()) != tinyxml2::XML_SUCCESS) {
      state.SkipWithError("the file is not written");
    }
  }
  CountBytes(state, path);
}

void SavePugixml(benchmark::State& state) {
  const bench::Scratch scratch;
  const std::string path = bench::MakePrefsFile(scratch, state.range(0));
  pugi::xml_document document;
  document.load_file(path.c_str());
  for (auto _ : state) {
    if (!document.save_file(path.c_str(), "")) state.SkipWithError("the file is not written");
  }
  CountBytes(state, path);
}

BENCHMARK(SaveLimit)->Name("save/limit")->SIZES;
BENCHMARK(SaveStore)->Name("save/wakerly")->SIZES;
BENCHMARK(SavePoco)->Name("save/Poco")->SIZES;
BENCHMARK(SaveLibxml2)->Name("save/libxml2")->SIZES;
BENCHMARK(SaveTinyxml2)->Name("save/tinyxml2")->SIZES;
BENCHMARK(SavePugixml)->Name("save/pugixml")->SIZES;

}  // namespace

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

#include <cstdio>
#include <ext/stdio_filebuf.h>
#include <fstream>
#include <functional>
#include <memory>
#include <pugixml.hpp>
#include <sstream>
#include <string>

#include "bench/support.h"
#include "esd/prefs/prefs_writer.h"

namespace {

// The numbers of entries that each document is measured with.
void Sizes(benchmark::internal::Benchmark* measurement) {
  measurement->Arg(bench::kSchemaEntries)->Arg(10'000)->Arg(100'000);
}

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

BENCHMARK_CAPTURE(MeasureLoad, limit, ReadWithExpat)->Name("load/limit")->Apply(Sizes);
BENCHMARK_CAPTURE(MeasureLoad, wakerly, LoadStore)->Name("load/wakerly")->Apply(Sizes);
BENCHMARK_CAPTURE(MeasureLoad, poco, LoadPoco)->Name("load/Poco")->Apply(Sizes);
BENCHMARK_CAPTURE(MeasureLoad, libxml2, LoadLibxml2)->Name("load/libxml2")->Apply(Sizes);
BENCHMARK_CAPTURE(MeasureLoad, tinyxml2, LoadTinyxml2)->Name("load/tinyxml2")->Apply(Sizes);
BENCHMARK_CAPTURE(MeasureLoad, pugixml, LoadPugixml)->Name("load/pugixml")->Apply(Sizes);

// `open_document` reads the document of a path and gives a function that saves it there.
void MeasureSave(benchmark::State& state,
                 std::function<bool()> (*open_document)(const std::string& path)) {
  const bench::Scratch scratch;
  const std::string path = bench::MakePrefsFile(scratch, state.range(0));
  const std::function<bool()> save = open_document(path);
  for (auto _ : state) {
    if (!save()) state.SkipWithError("the file is not written");
  }
  CountBytes(state, path);
}

// Saves as the store does: what `write` writes to a new file beside is flushed and takes the place
// of the old one.
template <typename Write>
bool Replace(const std::string& path, Write write) {
  const std::string beside = path + ".new";
  FILE* const file = std::fopen(beside.c_str(), "wxe");
  if (file == nullptr) return false;
  const bool written = write(file) && std::fflush(file) == 0 && fsync(fileno(file)) == 0;
  return std::fclose(file) == 0 && written && std::rename(beside.c_str(), path.c_str()) == 0;
}

std::function<bool()> OpenBytes(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return [path, beside = path + ".new", bytes = text.str()] {
    const int file = open(beside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    const ssize_t written = write(file, bytes.data(), bytes.size());
    const bool flushed = fsync(file) == 0;
    return close(file) == 0 && flushed && written == static_cast<ssize_t>(bytes.size()) &&
           std::rename(beside.c_str(), path.c_str()) == 0;
  };
}

std::function<bool()> OpenStore(const std::string& path) {
  return
      [store = std::make_shared<esd::PrefsWriter>(path, "Preferences")] { return store->Save(); };
}

std::function<bool()> OpenPoco(const std::string& path) {
  return [path, document = ParseWithPoco(path)] {
    return Replace(path, [&](FILE* file) {
      // Its streams do not give their descriptor away, which the flush needs.
      __gnu_cxx::stdio_filebuf<char> buffer(dup(fileno(file)), std::ios::out);
      std::ostream stream(&buffer);
      Poco::XML::DOMWriter writer;
      writer.setOptions(Poco::XML::XMLWriter::WRITE_XML_DECLARATION);
      writer.writeNode(stream, document);
      return static_cast<bool>(stream.flush());
    });
  };
}

std::function<bool()> OpenLibxml2(const std::string& path) {
  const std::shared_ptr<xmlDoc> document(xmlReadFile(path.c_str(), nullptr, 0), &xmlFreeDoc);
  return [path, document] {
    return Replace(path, [&](FILE* file) { return xmlDocDump(file, document.get()) >= 0; });
  };
}

std::function<bool()> OpenTinyxml2(const std::string& path) {
  const auto document = std::make_shared<tinyxml2::XMLDocument>();
  document->LoadFile(path.c_str());
  return [path, document] {
    return Replace(path,
                   [&](FILE* file) { return document->SaveFile(file) == tinyxml2::XML_SUCCESS; });
  };
}

std::function<bool()> OpenPugixml(const std::string& path) {
  const auto document = std::make_shared<pugi::xml_document>();
  document->load_file(path.c_str());
  return [path, document] {
    return Replace(path, [&](FILE* file) {
      pugi::xml_writer_file writer(file);
      document->save(writer, "");
      return std::ferror(file) == 0;
    });
  };
}

BENCHMARK_CAPTURE(MeasureSave, limit, OpenBytes)->Name("save/limit")->Apply(Sizes);
BENCHMARK_CAPTURE(MeasureSave, wakerly, OpenStore)->Name("save/wakerly")->Apply(Sizes);
BENCHMARK_CAPTURE(MeasureSave, poco, OpenPoco)->Name("save/Poco")->Apply(Sizes);
BENCHMARK_CAPTURE(MeasureSave, libxml2, OpenLibxml2)->Name("save/libxml2")->Apply(Sizes);
BENCHMARK_CAPTURE(MeasureSave, tinyxml2, OpenTinyxml2)->Name("save/tinyxml2")->Apply(Sizes);
BENCHMARK_CAPTURE(MeasureSave, pugixml, OpenPugixml)->Name("save/pugixml")->Apply(Sizes);

}  // namespace

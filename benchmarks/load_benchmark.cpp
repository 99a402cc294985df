// Loading a description file beside libxml2 reading the same file and doing nothing with it, in one program.
//
//   load_benchmark [--esi FILE]...     every file also ten times as long, its devices repeated with new
//   product codes
//
// Two files are generated, one that resembles a real one, and one dense in entries: no dictionaries, no
// indentation. The environment variable IGH_MASTER_ESI_DIR names a folder of more. "ratio" is loading alone,
// "ratio_freed" with freeing the store afterwards; reading always frees its document. The two take turns, and
// medians are compared, so that a drifting clock of the machine does not show.
#include "ENIObject/ENIObject.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <libxml/parser.h>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

constexpr int BATCH = 6;
constexpr int BATCH_WARM_UP = 2;

bool swallow(unsigned int, const char*) {
  return true;
}

std::string readFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    throw std::runtime_error("cannot read " + path.string());
  }
  return {std::istreambuf_iterator<char>(file), {}};
}

// Deletes the generated files at the end.
class Folder {
public:
  Folder() : m_path("/tmp/load_benchmark.XXXXXX") {
    if (mkdtemp(m_path.data()) == nullptr) {
      throw std::runtime_error("cannot make a folder in /tmp");
    }
  }
  ~Folder() { std::filesystem::remove_all(m_path); }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  std::string write(const std::string& name, const std::string& content) const {
    std::string path = m_path + "/" + name;
    std::ofstream(path, std::ios::binary) << content;
    return path;
  }

private:
  std::string m_path;
};

std::string formatted(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string formatted(const char* format, ...) {
  char text[400];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof(text), format, arguments);
  va_end(arguments);
  return text;
}

std::string generatedPdos(const char* element, unsigned int index, unsigned int sync) {
  std::string pdos;
  for (unsigned int pdo = 0; pdo < 8; ++pdo) {
    pdos += formatted("        <%s Fixed=\"1\" Sm=\"%u\">\n", element, sync);
    pdos += formatted("          <Index>#x%04X</Index>\n          <Name>Channel group</Name>\n", index + pdo);
    for (unsigned int entry = 1; entry <= 16; ++entry) {
      pdos += formatted("          <Entry>\n            <Index>#x%04X</Index>\n", 0x7000 + pdo);
      pdos += formatted("            <SubIndex>%u</SubIndex>\n            <BitLen>16</BitLen>\n", entry);
      pdos +=
          formatted("            <Name>%s channel value %u</Name>\n            <DataType>INT</DataType>\n",
                    element, 16 * pdo + entry);
      pdos += "          </Entry>\n";
    }
    pdos += formatted("        </%s>\n", element);
  }
  return pdos;
}

// Most of a real file is the object dictionary, which is read past.
std::string generatedDictionary() {
  std::string objects = "        <Profile>\n          <Dictionary>\n            <Objects>\n";
  for (unsigned int object = 0; object < 700; ++object) {
    objects += formatted("              <Object>\n                <Index>#x%04X</Index>\n", 0x2000 + object);
    objects +=
        formatted("                <Name>Parameter %u</Name>\n                <Type>UDINT</Type>\n", object);
    objects += "                <BitSize>32</BitSize>\n                <Info>\n"
               "                  <DefaultData>00000000</DefaultData>\n                </Info>\n"
               "                <Flags>\n                  <Access>rw</Access>\n                </Flags>\n"
               "              </Object>\n";
  }
  return objects + "            </Objects>\n          </Dictionary>\n        </Profile>\n";
}

std::string generatedFile(unsigned int products, const std::string& dictionary) {
  std::string devices;
  for (unsigned int product = 1; product <= products; ++product) {
    devices +=
        formatted("      <Device Physics=\"YY\">\n        <Type ProductCode=\"#x%X\" RevisionNo=\"#x10\">"
                  "Terminal</Type>\n",
                  product);
    devices +=
        "        <Name LcId=\"1033\">A terminal with many channels</Name>\n" + dictionary +
        generatedPdos("RxPdo", 0x1600, 2) + generatedPdos("TxPdo", 0x1A00, 3) +
        "        <Dc>\n          <OpMode>\n            <Name>DC</Name>\n            <AssignActivate>#x300"
        "</AssignActivate>\n          </OpMode>\n        </Dc>\n      </Device>\n";
  }
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<EtherCATInfo Version=\"1.6\">\n  <Vendor>\n    "
         "<Id>#xB0B</Id>\n"
         "    <Name>Generated</Name>\n  </Vendor>\n  <Descriptions>\n    <Devices>\n" +
         devices + "    </Devices>\n  </Descriptions>\n</EtherCATInfo>\n";
}

std::string withoutIndentation(const std::string& xml) {
  std::string dense;
  for (std::size_t at = 0; at < xml.size(); ++at) {
    if (xml[at] == '\n') {
      at = std::min(xml.find_first_not_of(' ', at + 1), xml.size()) - 1;
      continue;
    }
    dense += xml[at];
  }
  return dense;
}

std::string withNewProductCodes(std::string devices, unsigned int copy) {
  const std::string attribute = "ProductCode=\"";
  unsigned int product = copy << 20;
  for (std::size_t at = devices.find(attribute); at != std::string::npos; at = devices.find(attribute, at)) {
    at += attribute.size();
    devices.replace(at, devices.find('"', at) - at, std::to_string(++product));
  }
  return devices;
}

std::string tenfold(const std::string& xml) {
  const std::string opening = "<Devices>";
  const std::size_t start = xml.find(opening) + opening.size();
  const std::size_t end = xml.find("</Devices>");
  if (end == std::string::npos || end < start) {
    throw std::runtime_error("a file without a Devices element cannot be made longer");
  }
  const std::string devices = xml.substr(start, end - start);
  std::string all = xml.substr(0, end);
  for (unsigned int copy = 1; all.size() < 10 * xml.size(); ++copy) {
    all += withNewProductCodes(devices, copy);
  }
  return all + xml.substr(end);
}

double processorSeconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

struct Times {
  std::vector<double> done;
  std::vector<double> freed;
};

void readOnly(const std::string& path, Times& times) {
  const double start = processorSeconds();
  xmlDoc* document = xmlParseFile(path.c_str());
  xmlFreeDoc(document);
  times.done.push_back(processorSeconds() - start);
}

void load(const std::string& path, Times& times) {
  const double start = processorSeconds();
  {
    CMasterENIObject store(swallow);
    if (store.insertENIFile(path.c_str(), false) == 0) {
      throw std::runtime_error("cannot load " + path);
    }
    times.done.push_back(processorSeconds() - start);
  }
  times.freed.push_back(processorSeconds() - start);
}

double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

void runBatch(void (*run)(const std::string&, Times&), const std::string& path, Times& all) {
  Times warmUp;
  for (int i = 0; i < BATCH; ++i) {
    run(path, i < BATCH_WARM_UP ? warmUp : all);
  }
}

std::vector<std::string>& inputs() {
  static std::vector<std::string> paths;
  return paths;
}

void compare(benchmark::State& state) {
  const std::string& path = inputs()[static_cast<std::size_t>(state.range(0))];
  Times loads;
  Times reads;
  for ([[maybe_unused]] auto _ : state) {
    runBatch(readOnly, path, reads);
    runBatch(load, path, loads);
    state.SetIterationTime(loads.done.back());
  }
  const double megabytes = static_cast<double>(std::filesystem::file_size(path)) / 1e6;
  state.counters["MB"] = megabytes;
  state.counters["load_MB_per_s"] = megabytes / median(loads.done);
  state.counters["libxml2_MB_per_s"] = megabytes / median(reads.done);
  state.counters["ratio"] = median(loads.done) / median(reads.done);
  state.counters["ratio_freed"] = median(loads.freed) / median(reads.done);
  state.SetLabel(std::filesystem::path(path).filename().string());
}

// Takes the program's own arguments out of the list.
std::vector<std::string> filesGiven(int& argc, char** argv) {
  std::vector<std::string> files;
  int kept = 1;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--esi") == 0 && i + 1 < argc) {
      files.emplace_back(argv[++i]);
    } else {
      argv[kept++] = argv[i];
    }
  }
  argc = kept;
  const char* folder = std::getenv("IGH_MASTER_ESI_DIR");
  if (folder != nullptr && std::filesystem::is_directory(folder)) {
    for (const auto& file : std::filesystem::directory_iterator(folder)) {
      if (file.path().extension() == ".xml") {
        files.push_back(file.path().string());
      }
    }
  }
  return files;
}

benchmark::internal::Benchmark* const loadBenchmark = benchmark::RegisterBenchmark("load", compare);

void addInput(const Folder& folder, const std::string& file) {
  const std::string name = std::filesystem::path(file).filename().string();
  inputs().push_back(file);
  inputs().push_back(folder.write("tenfold_" + name, tenfold(readFile(file))));
}

} // namespace

int main(int argc, char** argv) {
  try {
    const Folder folder;
    addInput(folder, folder.write("generated.xml", generatedFile(3, generatedDictionary())));
    addInput(folder, folder.write("dense.xml", withoutIndentation(generatedFile(20, ""))));
    for (const std::string& file : filesGiven(argc, argv)) {
      addInput(folder, file);
    }
    loadBenchmark->DenseRange(0, static_cast<int>(inputs().size()) - 1)
        ->UseManualTime()
        ->MinTime(1)
        ->Unit(benchmark::kMillisecond);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
      return 2;
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "load_benchmark: %s\n", exception.what());
    return 1;
  }
}

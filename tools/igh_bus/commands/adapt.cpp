// igh_bus adapt: from the makers' files one of which the library uses everything.
#include "adapt/Before.h"
#include "adapt/Header.h"
#include "adapt/Output.h"
#include "adapt/ScratchFile.h"
#include "adapt/Slaves.h"
#include "adapt/Words.h"
#include "arguments/Arguments.h"
#include "bus/BusChoice.h"
#include "bus/OpenedMaster.h"
#include "commands/commands.h"
#include "text/Text.h"

#include <cstdio>
#include <filesystem>
#include <optional>

namespace igh_bus {
namespace {

using namespace adapt;

struct AdaptOptions : ScanOptions {
  std::string output;
  std::string header;
  std::string reportFolder;
  bool json = false;
  bool all = false;
  bool dryRun = false;
  std::string revision = "older";
  std::vector<std::string> modes;
  std::vector<std::string> pdos;
  std::vector<std::string> modules;
};

struct Assignment {
  unsigned int slave;
  std::string before; // behind the slave's number, up to the equals sign
  std::string value;
};

// "SLAVE=VALUE" or "SLAVE:SLOT=VALUE".
Assignment parseAssignment(const std::string& option, const std::string& text, bool withSlot) {
  const auto equals = text.find('=');
  const auto colon = withSlot ? text.find(':') : equals;
  if (equals == std::string::npos || colon > equals || (withSlot && colon == std::string::npos))
    throw Failure(usageError, option + " '" + text + "': use SLAVE" + (withSlot ? ":SLOT" : "") + "=VALUE");
  const auto slave = parseNumber(text.substr(0, colon), 0xFFFF, option + " slave");
  return {slave, colon == equals ? "" : text.substr(colon + 1, equals - colon - 1), text.substr(equals + 1)};
}

std::vector<std::uint16_t> parsePdos(const std::string& list) {
  std::vector<std::uint16_t> pdos;
  for (std::size_t start = 0; start <= list.size();) {
    const auto comma = std::min(list.find(',', start), list.size());
    pdos.push_back(
        static_cast<std::uint16_t>(parseNumber(list.substr(start, comma - start), 0xFFFF, "--pdo index")));
    start = comma + 1;
  }
  return pdos;
}

std::map<unsigned int, Wishes> parseWishes(const AdaptOptions& options, std::size_t count) {
  std::map<unsigned int, Wishes> wishes;
  const auto of = [&](const std::string& option, unsigned int slave) -> Wishes& {
    if (slave >= count)
      throw Failure(usageError, format("%s: slave %u: there are 0 to %zu", option.c_str(), slave, count - 1));
    return wishes[slave];
  };
  for (const auto& text : options.modes) {
    for (unsigned int slave = 0; text == "none" && slave < count; ++slave)
      wishes[slave].mode = text;
  }
  for (const auto& text : options.modes) {
    if (text == "none")
      continue;
    const auto assignment = parseAssignment("--mode", text, false);
    of("--mode", assignment.slave).mode = assignment.value;
  }
  for (const auto& text : options.pdos) {
    const auto assignment = parseAssignment("--pdo", text, false);
    of("--pdo", assignment.slave).pdos = parsePdos(assignment.value);
  }
  for (const auto& text : options.modules) {
    const auto assignment = parseAssignment("--module", text, true);
    const auto slot = parseNumber(assignment.before, 0xFF, "--module slot");
    of("--module", assignment.slave).modules[slot] =
        parseNumber(assignment.value, 0xFFFFFFFF, "--module ident");
  }
  return wishes;
}

RevisionRule parseRule(const std::string& text) {
  return text == "exact" ? RevisionRule::EXACT : text == "any" ? RevisionRule::ANY : RevisionRule::OLDER;
}

std::vector<Request> requestsOf(const AdaptOptions& options, const Sources& sources,
                                const std::vector<Device>& before, std::vector<std::string>& notes) {
  if (options.all) {
    auto requests = requestAll(sources, notes);
    for (const auto& [number, wishes] : parseWishes(options, requests.size()))
      requests[number].wishes = wishes;
    return requests;
  }
  const BusChoice bus(options, before);
  const auto slaves = OpenedMaster(options.master).slaves(before);
  auto wishes = parseWishes(options, slaves.size());
  const auto rule = parseRule(options.revision);
  for (unsigned int i = 0; i < slaves.size(); ++i) {
    const auto& info = slaves[i].info;
    const auto* device =
        chooseRevision(sources.devices, {info.vendor_id, info.product_code, info.revision_number}, rule);
    if (device && device->hasSlots && device->coe)
      wishes[i].reported = readModules(options, i);
  }
  return requestSlaves(sources, slaves, rule, wishes);
}

// The first vendor's devices go to the file that was asked for; the others' beside it.
std::string pathOfPart(const std::string& output, const Sources& sources, const Part& part, bool first) {
  if (first)
    return output;
  std::filesystem::path path(output);
  const auto vendor = format("-0x%08X", sources.files[part.vendorFile].vendorId);
  path.replace_filename(path.stem().string() + vendor + path.extension().string());
  return path.string();
}

std::vector<std::string> inputsOf(const Sources& sources) {
  std::vector<std::string> paths;
  for (const auto& file : sources.files)
    paths.push_back(file.path);
  return paths;
}

// Outputs of one run, which get their names when all are complete.
class Outputs {
public:
  explicit Outputs(std::vector<std::string> inputs) : m_inputs(std::move(inputs)) {}

  Output& add(const std::string& path) {
    checkOutput(path, m_inputs);
    for (const auto& output : m_outputs) {
      if (output.path() == path)
        throw Failure(usageError, path + ": two outputs have this name");
    }
    m_outputs.emplace_back(path);
    return m_outputs.back();
  }
  std::vector<std::string> publish() {
    std::vector<std::string> paths;
    for (auto& output : m_outputs) {
      output.publish();
      paths.push_back(output.path());
    }
    return paths;
  }

private:
  std::vector<std::string> m_inputs;
  std::vector<Output> m_outputs;
};

// Lets the library read every part, in the place where it will be or in none.
std::vector<std::string> writeParts(const AdaptOptions& options, const Sources& sources,
                                    Adaptation& adaptation, Outputs& outputs) {
  std::vector<std::string> paths;
  for (const auto& part : adaptation.parts) {
    if (options.output.empty() || options.dryRun) {
      const ScratchFile scratch;
      storePart(sources, adaptation, part, scratch.path(), options.all);
      continue;
    }
    paths.push_back(pathOfPart(options.output, sources, part, paths.empty()));
    storePart(sources, adaptation, part, outputs.add(paths.back()).beside(), options.all);
  }
  return paths;
}

std::string jsonText(const Sources& sources, const Adaptation& adaptation,
                     const std::vector<std::string>& files) {
  return adaptationData(sources, adaptation, files)
             .dump(1, ' ', false, nlohmann::json::error_handler_t::replace) +
         "\n";
}

void writeFurther(const AdaptOptions& options, const Sources& sources, const Adaptation& adaptation,
                  const std::vector<std::string>& files, Outputs& outputs) {
  if (!options.header.empty() && !options.dryRun)
    outputs.add(options.header).write(headerText(adaptation, options.header));
  if (options.reportFolder.empty() || options.dryRun)
    return;
  std::error_code error;
  std::filesystem::create_directories(options.reportFolder, error);
  if (error)
    throw Failure(usageError, options.reportFolder + " cannot be made: " + error.message());
  outputs.add(options.reportFolder + "/adapt.txt").write(adaptationText(adaptation));
  outputs.add(options.reportFolder + "/adapt.json").write(jsonText(sources, adaptation, files));
}

void checkOptions(const AdaptOptions& options) {
  if (options.output.empty() && !options.dryRun && !options.json)
    throw Failure(usageError, "give the file to write with -o, or --dry-run");
  for (const auto& path : {options.output, options.header}) {
    if (!path.empty())
      checkOutput(path, options.descriptions);
  }
}

void print(const AdaptOptions& options, const Sources& sources, const Adaptation& adaptation,
           const std::vector<std::string>& files, const std::vector<std::string>& written) {
  if (options.json) {
    std::fputs(jsonText(sources, adaptation, files).c_str(), stdout);
    return;
  }
  std::fputs(adaptationText(adaptation).c_str(), stdout);
  for (const auto& file : written)
    std::printf("Written: %s\n", file.c_str());
  if (files.size() > 1)
    std::printf("A description file names one vendor: give all %zu to --eni.\n", files.size());
}

Status adaptFiles(const AdaptOptions& options) {
  checkOptions(options);
  const auto sources = readSources(options.descriptions);
  const auto before = loadedBefore(sources, !options.all); // a simulated bus is made of the markup too
  std::vector<std::string> notes;
  auto adaptation = adaptDevices(sources, requestsOf(options, sources, before, notes), before);
  adaptation.notes.insert(adaptation.notes.begin(), notes.begin(), notes.end());
  Outputs outputs(inputsOf(sources));
  const auto files = writeParts(options, sources, adaptation, outputs);
  writeFurther(options, sources, adaptation, files, outputs);
  print(options, sources, adaptation, files, outputs.publish());
  return success;
}

} // namespace

void addAdaptCommand(CLI::App& app, Action& action) {
  auto* command = addCommand(app, "adapt",
                             "Make of the makers' description files one for the slaves on the bus, in which "
                             "every entry has a name and a type of the library");
  const auto options = std::make_shared<AdaptOptions>();
  addBusOptions(*command, *options);
  command
      ->add_option("-o,--output", options->output, "The file to write; further vendors get files beside it")
      ->type_name("MACHINE.xml");
  command->add_option("--header", options->header, "A C header with the names, and the masks of bits")
      ->type_name("MACHINE.h");
  command->add_option("--report", options->reportFolder, "A folder for what was done, as text and as JSON")
      ->type_name("DIR");
  command->add_flag("--json", options->json, "Say what was done as JSON");
  command->add_flag("--all", options->all, "Every device of the files, without a bus")->excludes("--bus");
  command->add_flag("--dry-run", options->dryRun, "Write nothing");
  command
      ->add_option("--revision", options->revision,
                   "Which description serves a slave whose own revision has none: exact (none does), older "
                   "(the highest below it), any (the nearest)")
      ->check(CLI::IsMember({"exact", "older", "any"}));
  command
      ->add_option("--mode", options->modes,
                   "The operation mode for clocks; none for no clocks, also without a slave for all")
      ->type_name("SLAVE=NAME");
  command
      ->add_option("--pdo", options->pdos,
                   "The PDOs of a direction, instead of those assigned from the start")
      ->type_name("SLAVE=0x1A00,...");
  command->add_option("--module", options->modules, "The module in a slot, counted from 1")
      ->type_name("SLAVE:SLOT=IDENT");
  command->callback([options, &action] { action = [options] { return adaptFiles(*options); }; });
}

} // namespace igh_bus

// The proof: slaves as their makers describe them, run with their own files and with adapted ones.
#include "Mover.h"
#include "Program.h"
#include "Traps.h"

#include <filesystem>
#include <nlohmann/json.hpp>

namespace {

using nlohmann::json;
using Files = std::vector<std::string>;

// Where the name is the only one of its device.
mover::Parts byOwnName(const maker::Device& device, const maker::Place& place) {
  int count = 0;
  for (const auto& pdo : device.pdos)
    for (const auto& entry : pdo.entries)
      count += pdo.manager >= 0 && entry.name == place.entry->name ? 1 : 0;
  return count > 1 ? mover::Parts() : mover::Parts{{place.entry->name, place.entry->type}};
}

std::uint32_t numberAt(const json& object, const char* key) {
  return static_cast<std::uint32_t>(std::stoul(object[key].get<std::string>(), nullptr, 16));
}

maker::Key keyOf(const json& device) {
  return {numberAt(device, "vendor_id"), numberAt(device, "product_code"), numberAt(device, "revision")};
}

// What `igh_bus adapt` made of all devices of these files, and what it says of that.
struct Adapted {
  json data;
  maker::Modules modules;
  struct Item {
    mover::Parts parts;
    std::size_t bits = 0; // that they hold
  };
  std::map<std::string, std::vector<Item>> items; // by device, direction and object of the slave

  explicit Adapted(const Files& files) {
    std::string line = "adapt --all --json -o '" + scratch("adapted.xml") + "' --eni";
    for (const auto& file : files)
      line += " '" + file + "'";
    const auto outcome = ighBus(line);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    data = json::parse(outcome.out);
    for (const auto& device : data["devices"])
      read(device);
  }

  void read(const json& device) {
    const auto key = keyOf(device);
    auto& plugged = modules[key];
    plugged = {0};                       // if there is none
    std::map<std::string, json> origins; // of entries that got an object of their own
    for (const auto& change : device["changes"]) {
      const auto where = change["where"].get<std::string>();
      if (change["what"] == "object")
        origins[where.substr(1, where.size() - 2)] = change["from"];
      if (change["what"] == "module") {
        plugged.resize(std::stoul(where.substr(5)));
        plugged.back() = numberAt(change, "to");
      }
    }
    for (const auto& entry : device["entries"]) {
      const auto origin = origins.find(entry["name"].get<std::string>());
      const auto& object = origin == origins.end() ? entry["object"] : origin->second;
      const json itself = {{"object", object}, {"from_bit", 0}, {"count", entry["bit_length"]}};
      for (const auto& bits : entry.value("bits", json::array({itself}))) {
        auto& all = items[placeText(key, entry["direction"] == "output", bits["object"])];
        const auto from = bits["from_bit"].get<std::size_t>();
        if (from == 0 || all.empty())
          all.emplace_back();
        auto& item = all.back();
        mover::Part part{entry["name"], entry["type"]};
        if (bits.contains("mask"))
          part.mask = numberAt(bits, "mask");
        if (from == item.bits)
          item.parts.push_back(part);
        else
          item.parts.clear(); // bits in between are out of reach
        item.bits = from + bits["count"].get<std::size_t>();
      }
    }
  }

  static std::string placeText(const maker::Key& key, bool output, const std::string& object) {
    return testing::PrintToString(key) + (output ? " output " : " input ") + object;
  }

  // To be asked for each place once, in order: an object may stand in several.
  mover::Reach reach() const {
    return [this, asked = std::map<std::string, std::size_t>()](const maker::Device& device,
                                                                const maker::Place& place) mutable {
      const auto text = placeText(device.key, place.pdo->output, place.text());
      const auto found = items.find(text);
      const auto number = asked[text]++;
      return found == items.end() || number >= found->second.size() ? mover::Parts()
                                                                    : found->second[number].parts;
    };
  }
};

struct Proof {
  mover::Outcome before;
  mover::Outcome after;
  json data;
  const json& of(const maker::Key& key) const {
    const auto& devices = data["devices"];
    return *std::find_if(devices.begin(), devices.end(), [&](const json& one) { return keyOf(one) == key; });
  }
};

std::string counts(const mover::Outcome& outcome) {
  std::ostringstream text;
  text << outcome.refused.size() << " devices refuse, " << outcome.lost.size() << " of " << outcome.entries
       << " entries are lost, " << outcome.clocks.size() << " clocks";
  return text.str();
}

// The slaves may also have modules that the files only refer to.
Proof prove(const Files& files, const Files& referred = {}) {
  Adapted adapted(files);
  Files all = files;
  all.insert(all.end(), referred.begin(), referred.end());
  const auto devices = maker::devicesOf(all, adapted.modules);
  Proof proof{mover::move(devices, files, byOwnName),
              mover::move(devices, adapted.data["files"].get<Files>(), adapted.reach()), adapted.data};
  const auto& [before, after, data] = proof;
  std::cout << devices.size() << " devices\n  before: " << counts(before) << "\n  after:  " << counts(after)
            << std::endl; // before anything forks
  EXPECT_THAT(after.refused, testing::IsEmpty());
  EXPECT_EQ(after.errors, 0U);
  const auto clocked =
      std::count_if(devices.begin(), devices.end(), [](const auto& one) { return one.clocked; });
  EXPECT_EQ(after.clocks.size(), static_cast<std::size_t>(clocked));
  std::size_t leftOut = 0;
  for (const auto& loss : after.lost) {
    const auto told = proof.of(loss.key)["reasons"].dump() + proof.of(loss.key)["changes"].dump();
    EXPECT_THAT(told, testing::HasSubstr(loss.of)) << loss.what;
    leftOut += loss.of.find("PDO 0x") == 0 ? 1 : 0;
  }
  for (const auto& file : data["files"])
    std::remove(file.get<std::string>().c_str());
  EXPECT_EQ(data["summary"]["entries"], after.entries - leftOut);
  EXPECT_EQ(data["summary"]["reachable_after"], after.entries - after.lost.size());
  EXPECT_EQ(data["summary"]["reachable_before"], before.entries - before.lost.size());
  return proof;
}

TEST(AdaptProof, EveryBitOfEverySlaveGoesWhereItsNameSays) {
  const auto modules = scratch("modules.xml", traps::expand(traps::MODULES));
  const auto file =
      scratch("traps.xml", traps::expand(traps::DEVICES, modules.substr(modules.rfind('/') + 1)));
  const auto proof = prove({file}, {modules});
  EXPECT_EQ(counts(proof.before), "3 devices refuse, 78 of 87 entries are lost, 0 clocks");
  std::string lost;
  for (const auto& loss : proof.after.lost)
    lost += loss.what + '|';
  EXPECT_EQ(lost, "PDO 0x1A00 0x6000:01 INT|PDO 0x1600 0x7000:03 |");
  const auto names = [&](std::uint32_t product) {
    std::string text;
    for (const auto& entry : proof.of({0x1234, product, 1})["entries"])
      text += entry["name"].get<std::string>() + '|';
    return text;
  };
  EXPECT_EQ(names(3), "Target|Control|Actual|Status|");
  EXPECT_EQ(names(4), "Mode .. Torn|Ramp|Torn|Torque|Channel 1 Value|Channel 1 Status|Channel 1 "
                      "0x6000:03|Channel 2 Value 0x6010:01|"
                      "Channel 2 Low 0x6010:02|Channel 2 Status|Channel 2 Value 0x6020:01|"
                      "Channel 2 Low 0x6020:02 .. Rest|");
  EXPECT_THAT(names(5), testing::StartsWith("Outputs U32|Outputs I16|Outputs Mode|Outputs Long low|"
                                            "Outputs Long high|Outputs Stamp low|Outputs Stamp high|"
                                            "Outputs Frame[2]|Outputs Frame[3]|"));
  EXPECT_THAT(proof.after.clocks,
              testing::ElementsAre("ecrt_slave_config_dc(0:7, 0x0300, 200000, -5000, 0, 0)"));
}

TEST(AdaptProof, NothingIsLostOfRealFilesButWithAReason) {
  if (std::string(IGH_TEST_ESI_DIR).empty())
    GTEST_SKIP() << "no folder of real description files";
  int devices = 0;
  int whole = 0;
  for (const auto& file : std::filesystem::directory_iterator(IGH_TEST_ESI_DIR)) {
    if (file.path().extension() != ".xml")
      continue;
    SCOPED_TRACE(file);
    const auto quoted = " '" + file.path().string() + "'";
    EXPECT_EQ(ighBus("describe" + quoted).status, 0);
    EXPECT_EQ(ighBus("run --cycles 100 --eni" + quoted).status, 0);
    const auto summary = prove({file.path()}).data["summary"];
    devices += summary["devices"].get<int>();
    whole += summary["whole_after"].get<int>();
  }
  EXPECT_GE(100 * whole, 99 * devices);
}

} // namespace

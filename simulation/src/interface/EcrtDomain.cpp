// ecrt_domain_*.
#include "interface/Invoke.h"

using namespace ethercat_simulation;

namespace {

// "[0:1 0x00000002 0x044C2C52 0x7000:01, ...]": the rows up to the one that ends the list.
std::string rowsText(const ec_pdo_entry_reg_t* rows) {
  if (rows == nullptr) {
    return "NULL";
  }
  std::string text = "[";
  for (const ec_pdo_entry_reg_t* row = rows; row->index != 0; ++row) {
    text += (row != rows ? ", " : "") + std::to_string(row->alias) + ":" + std::to_string(row->position) +
            " " + hexText(row->vendor_id, 8) + " " + hexText(row->product_code, 8) + " " +
            hexText(row->index, 4) + ":" + hexText(row->subindex, 2).substr(2);
  }
  return text + "]";
}

} // namespace

int ecrt_domain_reg_pdo_entry_list(ec_domain_t* domain, const ec_pdo_entry_reg_t* pdo_entry_regs) {
  return invoke<Domain>(
      Call::regPdoEntryList, domain, BAD_HANDLE_RESULT,
      [&](Master& master, Domain& object) { return master.setup().registerEntries(object, pdo_entry_regs); },
      [&](const Domain& object) {
        return std::to_string(object.number()) + ", " + rowsText(pdo_entry_regs);
      });
}

uint8_t* ecrt_domain_data(ec_domain_t* domain) {
  return invoke<Domain, std::uint8_t*>(
      Call::domainData, domain, nullptr, [](const Domain& object) { return object.data(); }, NoArguments());
}

size_t ecrt_domain_size(const ec_domain_t* domain) {
  return invoke<Domain>(
      Call::domainSize, domain, static_cast<std::size_t>(-1),
      [](const Domain& object) { return object.size(); }, NoArguments());
}

void ecrt_domain_process(ec_domain_t* domain) {
  const auto work = [](Domain& object) {
    object.process();
    return Nothing{};
  };
  invoke<Domain>(Call::domainProcess, domain, Nothing{}, work, NoArguments());
}

void ecrt_domain_queue(ec_domain_t* domain) {
  const auto work = [](Domain& object) {
    object.queue();
    return Nothing{};
  };
  invoke<Domain>(Call::domainQueue, domain, Nothing{}, work, NoArguments());
}

void ecrt_domain_state(const ec_domain_t* domain, ec_domain_state_t* state) {
  const auto work = [&](const Domain& object) {
    object.state(*state);
    return Nothing{};
  };
  invoke<Domain>(Call::domainState, domain, Nothing{}, work, NoArguments());
}

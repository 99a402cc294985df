// What was done, for people and for programs.
#ifndef IGH_BUS_ADAPT_WORDS_H
#define IGH_BUS_ADAPT_WORDS_H

#include "adapt/Adaptation.h"

#include <nlohmann/json.hpp>

namespace igh_bus::adapt {

// A line for each change, and what is open.
std::string adaptationText(const Adaptation& adaptation);

// `files`: those written, by vendor; empty for none.
nlohmann::ordered_json adaptationData(const Sources& sources, const Adaptation& adaptation,
                                      const std::vector<std::string>& files);

} // namespace igh_bus::adapt

#endif

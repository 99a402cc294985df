// The pictures of the page, each drawn from its part of the data.
#ifndef IGH_BUS_REPORT_PICTURES_H
#define IGH_BUS_REPORT_PICTURES_H

#include <nlohmann/json.hpp>

#include <string>

namespace igh_bus {

std::string histogramPicture(const nlohmann::ordered_json& data);
std::string latencyPicture(const nlohmann::ordered_json& data);
std::string phasesPicture(const nlohmann::ordered_json& data);
std::string clockPictures(const nlohmann::ordered_json& data);
std::string statesPicture(const nlohmann::ordered_json& data);
// Watched entries; the target and the actual value of one quantity of a slave share a picture.
std::string plotPictures(const nlohmann::ordered_json& data);

// The cycles of the run, at least 1.
double cyclesOf(const nlohmann::ordered_json& data);

} // namespace igh_bus

#endif

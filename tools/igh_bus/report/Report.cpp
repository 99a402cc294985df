#include "report/Report.h"

#include "text/Failure.h"
#include "text/Text.h"

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace igh_bus {
namespace {

using Json = nlohmann::ordered_json;

void write(const std::string& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  if (!file)
    throw Failure(usageError, path + " cannot be written: " + std::strerror(errno));
}

} // namespace

void prepareReportFolder(const std::string& folder) {
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (error)
    throw Failure(usageError, folder + " cannot be made: " + error.message());
  write(folder + "/report.json", ""); // now, and not after an hour's run
}

void writeReport(const std::string& folder, const Json& data) {
  // Names come from slaves and files and need not be UTF-8: what is not becomes U+FFFD in both.
  const Json clean = Json::parse(data.dump(-1, ' ', false, Json::error_handler_t::replace));
  write(folder + "/report.json", clean.dump(1) + "\n");
  write(folder + "/report.html", reportPage(clean));
  std::printf("\nReport: %s/report.html\n", folder.c_str());
}

void printShortReport(const Recording& recording) {
  std::printf("\nTiming in us            min      p50      p99    p99.9   p99.99      max  > period\n");
  for (int phase = 0; phase < Recording::phases; ++phase) {
    const auto which = static_cast<Recording::Phase>(phase);
    const Histogram& histogram = recording.histogram(which);
    std::printf("  %-15s %9.1f %8.0f %8.0f %8.0f %8.0f %8.1f %9" PRIu64 "\n", Recording::title(which),
                histogram.minimumUs(), histogram.percentileUs(0.5), histogram.percentileUs(0.99),
                histogram.percentileUs(0.999), histogram.percentileUs(0.9999), histogram.maximumUs(),
                histogram.beyondLimit());
  }
}

} // namespace igh_bus

// Small pieces of a page.
#ifndef IGH_BUS_REPORT_HTML_H
#define IGH_BUS_REPORT_HTML_H

#include <nlohmann/json.hpp>

#include <map>
#include <string>
#include <vector>

namespace igh_bus {

// Text that stands for itself in HTML and SVG, also within an attribute.
std::string escaped(const std::string& text);

// A text, number or truth value as people read it, escaped.
std::string shown(const nlohmann::ordered_json& value);

// Replaces each {{name}} of a page by its text, which is not looked into again.
std::string filled(const std::string& page, const std::map<std::string, std::string>& texts);

class Table {
public:
  struct Column {
    std::string heading;
    bool number = false;
  };
  Table(const std::string& caption, const std::vector<Column>& columns);
  // Cells are markup; the first one is the heading of its row. `attributes` of a cell, where there are any.
  void row(const std::vector<std::string>& cells, const std::vector<std::string>& attributes = {});
  std::string html() const; // in a frame that scrolls where the screen is narrow

private:
  std::string m_caption;
  std::vector<Column> m_columns;
  std::string m_rows;
};

} // namespace igh_bus

#endif

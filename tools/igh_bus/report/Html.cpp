#include "report/Html.h"

#include "text/Text.h"

namespace igh_bus {

std::string escaped(const std::string& text) {
  std::string safe;
  for (const char letter : text) {
    switch (letter) {
    case '&':
      safe += "&amp;";
      break;
    case '<':
      safe += "&lt;";
      break;
    case '>':
      safe += "&gt;";
      break;
    case '"':
      safe += "&quot;";
      break;
    case '\'':
      safe += "&#39;";
      break;
    default:
      safe += static_cast<unsigned char>(letter) < ' ' ? ' ' : letter;
    }
  }
  return safe;
}

std::string shown(const nlohmann::ordered_json& value) {
  if (value.is_string())
    return escaped(value.get<std::string>());
  if (value.is_boolean())
    return value.get<bool>() ? "yes" : "no";
  if (value.is_number_integer())
    return value.dump();
  return value.is_number() ? format("%.10g", value.get<double>()) : "";
}

std::string filled(const std::string& page, const std::map<std::string, std::string>& texts) {
  std::string result;
  std::size_t place = 0;
  for (std::size_t open = 0; (open = page.find("{{", place)) != std::string::npos;) {
    const auto close = page.find("}}", open);
    result += page.substr(place, open - place) + texts.at(page.substr(open + 2, close - open - 2));
    place = close + 2;
  }
  return result + page.substr(place);
}

Table::Table(const std::string& caption, const std::vector<Column>& columns)
    : m_caption(caption), m_columns(columns) {}

void Table::row(const std::vector<std::string>& cells, const std::vector<std::string>& attributes) {
  m_rows += "<tr>";
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const char* const tag = i == 0 ? "th" : "td";
    m_rows +=
        format("<%s%s%s", tag, i == 0 ? " scope=\"row\"" : "", m_columns[i].number ? " class=\"n\"" : "");
    if (i < attributes.size() && !attributes[i].empty())
      m_rows.append(" ").append(attributes[i]);
    m_rows.append(">").append(cells[i]).append("</").append(tag).append(">");
  }
  m_rows += "</tr>\n";
}

std::string Table::html() const {
  std::string head;
  for (const auto& [heading, number] : m_columns)
    head += std::string("<th scope=\"col\"") + (number ? " class=\"n\">" : ">") + escaped(heading) + "</th>";
  // A frame that scrolls must be reached by the keyboard, too.
  return "<div class=\"scroll\" tabindex=\"0\" role=\"region\" aria-label=\"" + escaped(m_caption) +
         "\"><table>\n<caption>" + escaped(m_caption) + "</caption>\n<thead><tr>" + head +
         "</tr></thead>\n<tbody>\n" + m_rows + "</tbody></table></div>\n";
}

} // namespace igh_bus

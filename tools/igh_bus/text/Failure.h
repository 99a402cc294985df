// How a command ends.
#ifndef IGH_BUS_FAILURE_H
#define IGH_BUS_FAILURE_H

#include <stdexcept>
#include <string>

namespace igh_bus {

// Exit statuses of the program.
enum Status { success = 0, notLoaded = 1, usageError = 2, busError = 3 };

// Ends a command with one line on standard error; an empty text means that the reason is printed already.
class Failure : public std::runtime_error {
public:
  Failure(Status status, const std::string& text) : std::runtime_error(text), m_status(status) {}
  Status status() const { return m_status; }

private:
  Status m_status;
};

} // namespace igh_bus

#endif

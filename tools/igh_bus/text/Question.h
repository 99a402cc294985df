// A question to the person at the terminal.
#ifndef IGH_BUS_QUESTION_H
#define IGH_BUS_QUESTION_H

#include <string>

namespace igh_bus {

enum class Agreement { letter, word };

// True for an answer that begins with y, or is the whole word yes. Throws Failure(usageError) where standard
// input is no terminal.
bool confirm(const std::string& question, Agreement wanted = Agreement::letter);

} // namespace igh_bus

#endif

#include "text/Question.h"

#include "text/Failure.h"

#include <cstdio>
#include <unistd.h>

namespace igh_bus {

bool confirm(const std::string& question, Agreement wanted) {
  if (isatty(STDIN_FILENO) == 0)
    throw Failure(usageError, question + " There is no terminal to answer on: use --yes");
  const bool whole = wanted == Agreement::word;
  std::fprintf(stderr, "igh_bus: %s [%s/N] ", question.c_str(), whole ? "yes" : "y");
  std::string answer;
  char letter = 0;
  while (read(STDIN_FILENO, &letter, 1) == 1 && letter != '\n')
    answer += letter;
  return whole ? answer == "yes" : !answer.empty() && (answer[0] == 'y' || answer[0] == 'Y');
}

} // namespace igh_bus

#include "ENIObject/Report.h"

#include <cstdarg>
#include <cstdio>

void reportMessage(LOG_FUNCTION log, unsigned int level, const char* format, ...) {
  char text[256] = {};
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof(text), format, arguments);
  va_end(arguments);

  if (log == nullptr || !log(level, text)) {
    std::printf("%s\n", text);
  }
}

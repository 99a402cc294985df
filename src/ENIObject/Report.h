#ifndef ENIOBJECT_REPORT_H
#define ENIOBJECT_REPORT_H

// A log sink. Levels: 0 errors, 1 warnings and notable information, 2 tolerated irregularities, 3 details.
// True when it has dealt with the text, which lives for the call only.
using LOG_FUNCTION = bool (*)(unsigned int level, const char* text);

// Formats at most 255 characters and offers them to `log`; prints them as a line to standard output when
// there is no sink or it returns false.
void reportMessage(LOG_FUNCTION log, unsigned int level, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

#endif

#ifndef IGH_MASTER_LOGOUTPUT_H
#define IGH_MASTER_LOGOUTPUT_H

// The log sink that every master gets. Prints nothing itself; false, which makes the writer print, only for
// level 0.
bool logOutput(unsigned int level, const char* text);

#endif

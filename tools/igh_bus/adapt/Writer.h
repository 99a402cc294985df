// The adapted devices as a description file.
#ifndef IGH_BUS_ADAPT_WRITER_H
#define IGH_BUS_ADAPT_WRITER_H

#include "adapt/Document.h"
#include "adapt/Plan.h"

namespace igh_bus::adapt {

// The devices must be of one vendor: a description file names one only.
void buildDocument(Document& document, const SourceFile& vendor, const std::vector<const Plan*>& plans);

} // namespace igh_bus::adapt

#endif

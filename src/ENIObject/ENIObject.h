// ENIObject.h - the face of the description floor: the store that loads device-description files, the slave
// descriptions it makes of them, and the one way in which this library reports a message.
#ifndef ENIOBJECT_ENIOBJECT_H
#define ENIOBJECT_ENIOBJECT_H

#include "ENIObject/CMasterENIObject.h"
#include "ENIObject/CSlaveENIObject.h"
#include "ENIObject/CXmlParser.h"
#include "ENIObject/Report.h"

#endif

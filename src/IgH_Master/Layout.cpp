// The records and numbers of the public header, as programs in other languages are built against them: the
// same on every processor.
#include <igh_master.h>

#include <cstddef>

static_assert(sizeof(bool) == 1 && sizeof(double) == 8);
static_assert(sizeof(ETHERCAT_DATA_TYPE) == 4 && sizeof(ETHERCAT_ERROR_CODE) == 4 &&
              sizeof(COMM_DIAG_INDEX) == 4);
static_assert(sizeof(_ETHERCAT_COMM_DIAG_INFO) == 32 && alignof(_ETHERCAT_COMM_DIAG_INFO) == 8);
static_assert(offsetof(_ETHERCAT_COMM_DIAG_INFO, txPdoReceivedCostUs) == 8 &&
              offsetof(_ETHERCAT_COMM_DIAG_INFO, sdoCostUs) == 12 &&
              offsetof(_ETHERCAT_COMM_DIAG_INFO, rxPdoSentCostUs) == 16 &&
              offsetof(_ETHERCAT_COMM_DIAG_INFO, userCallbackCostUs) == 20 &&
              offsetof(_ETHERCAT_COMM_DIAG_INFO, totalExchangeCostUs) == 24);

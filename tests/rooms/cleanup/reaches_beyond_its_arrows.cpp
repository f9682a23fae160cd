#include "log/log.h"
#include "rotation/rewriter.h"
#include "runtime_conf/runtime_conf.h"

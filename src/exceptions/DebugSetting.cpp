#include "vorel/exceptions/DebugSetting.h"

namespace vorel::util {

bool g_DebugSetting = false;

}  // namespace vorel::util

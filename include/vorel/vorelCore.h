/// \file
/// Everything that the library offers. No Windows header is included: handles cross the interface as `void*` and DWORD
/// as `unsigned long`.
#pragma once

#include "vorel/Export.h"
#include "vorel/core/Array.h"
#include "vorel/core/BaseString.h"
#include "vorel/core/Format.h"
#include "vorel/core/HashMap.h"
#include "vorel/core/PointerStack.h"
#include "vorel/core/Protocol.h"
#include "vorel/exceptions/DebugSetting.h"
#include "vorel/exceptions/Exception.h"
#include "vorel/exceptions/ExceptionFamily.h"
#include "vorel/exceptions/Messages.h"
#include "vorel/sync/CriticalSections.h"
#include "vorel/sync/Guard.h"
#include "vorel/sync/ThreadSafety.h"
#include "vorel/system/ErrorText.h"
#include "vorel/system/ProcessPriority.h"
#include "vorel/system/Time.h"
#include "vorel/text/Unicode.h"
#include "vorel/values/BooleanParsing.h"
#include "vorel/values/Comparing.h"
#include "vorel/values/Joining.h"
#include "vorel/values/ListParsing.h"
#include "vorel/values/NumberParsing.h"
#include "vorel/values/Splitting.h"

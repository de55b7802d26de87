/// \file
/// The flat interface: numbers, booleans, lists and times as text, the current time, text comparison, error texts, and
/// the last failure. This header includes the headers of these families.
#pragma once

#include "vorel/flat/Comparing.h"
#include "vorel/flat/ErrorText.h"
#include "vorel/flat/LastError.h"
#include "vorel/flat/Lists.h"
#include "vorel/flat/Numbers.h"
#include "vorel/flat/Time.h"

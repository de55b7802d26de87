/// \file
/// The flat interface: numbers, booleans, lists and times from and to text, text comparison, and error texts. This
/// header includes the headers of these families.
#pragma once

#include "vorel/flat/Comparing.h"
#include "vorel/flat/ErrorText.h"
#include "vorel/flat/LastError.h"
#include "vorel/flat/Lists.h"
#include "vorel/flat/Numbers.h"
#include "vorel/flat/Time.h"

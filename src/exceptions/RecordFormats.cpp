#include "vorel/exceptions/RecordFormats.h"

namespace vorel {

const wchar_t* const vexCatchVorel = L"%ls: Vorel exception caught";
const wchar_t* const vexCatchClassVorel = L"%ls::%ls: Vorel exception caught";
const wchar_t* const vexCatchSevere = L"%ls: Severe error caught";
const wchar_t* const vexCatchClassSevere = L"%ls::%ls: Severe error caught";
const wchar_t* const vexCatchAndThrowVorel = L"%ls: Vorel exception rethrown";
const wchar_t* const vexCatchAndThrowClassVorel = L"%ls::%ls: Vorel exception rethrown";
const wchar_t* const vexCatchAndThrowSevere = L"%ls: Severe error thrown";
const wchar_t* const vexCatchAndThrowClassSevere = L"%ls::%ls: Severe error thrown";
const wchar_t* const vexDestructorCaught = L"%ls::~%ls: Vorel exception suppressed";
const wchar_t* const vexDestructorThrown = L"%ls::~%ls: Vorel exception rethrown";
const wchar_t* const vexDestructorSevereCaught = L"%ls::~%ls: Severe error suppressed";
const wchar_t* const vexDestructorSevereThrown = L"%ls::~%ls: Severe error thrown";
const wchar_t* const vexTestFailed = L"%ls: TestAndThrow test failed";

}  // namespace vorel

/// \file
/// The formats of the records that handlers of exceptions write. They are exported so that clients can write the same
/// lines. The library itself does not use `vexTestFailed`. A format with one `%ls` takes a function name. A format with
/// `%ls::%ls` takes a class name and a method name. A destructor format takes the class name twice.
#pragma once

#include "vorel/Export.h"

namespace vorel {

extern VOREL_API const wchar_t* const vexCatchVorel;                ///< "%ls: Vorel exception caught"
extern VOREL_API const wchar_t* const vexCatchClassVorel;           ///< "%ls::%ls: Vorel exception caught"
extern VOREL_API const wchar_t* const vexCatchSevere;               ///< "%ls: Severe error caught"
extern VOREL_API const wchar_t* const vexCatchClassSevere;          ///< "%ls::%ls: Severe error caught"
extern VOREL_API const wchar_t* const vexCatchAndThrowVorel;        ///< "%ls: Vorel exception rethrown"
extern VOREL_API const wchar_t* const vexCatchAndThrowClassVorel;   ///< "%ls::%ls: Vorel exception rethrown"
extern VOREL_API const wchar_t* const vexCatchAndThrowSevere;       ///< "%ls: Severe error thrown"
extern VOREL_API const wchar_t* const vexCatchAndThrowClassSevere;  ///< "%ls::%ls: Severe error thrown"
extern VOREL_API const wchar_t* const vexDestructorCaught;          ///< "%ls::~%ls: Vorel exception suppressed"
extern VOREL_API const wchar_t* const vexDestructorThrown;          ///< "%ls::~%ls: Vorel exception rethrown"
extern VOREL_API const wchar_t* const vexDestructorSevereCaught;    ///< "%ls::~%ls: Severe error suppressed"
extern VOREL_API const wchar_t* const vexDestructorSevereThrown;    ///< "%ls::~%ls: Severe error thrown"
extern VOREL_API const wchar_t* const vexTestFailed;                ///< "%ls: TestAndThrow test failed"

}  // namespace vorel

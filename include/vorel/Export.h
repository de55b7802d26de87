/// \file
/// The export macro of the library: `VOREL_API` marks what crosses the border of the DLL. It is empty for the static
/// form (`VOREL_STATIC`), exports while the DLL is built (`VOREL_BUILDING_DLL`) and imports for everybody else.
#pragma once

#if defined(VOREL_STATIC)
#define VOREL_API
#elif defined(VOREL_BUILDING_DLL)
#define VOREL_API __declspec(dllexport)
#else
/// Stands before every declaration that leaves the library.
#define VOREL_API __declspec(dllimport)
#endif

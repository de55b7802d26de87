# Options for compiling the C++ targets of this project: the language, the floating-point rules, the warnings, and traps
# on undefined behaviour. They do not affect the users of the library.

# The presets of ./dev enable this option. By default it is off, because other versions of the compilers may have other
# warnings.
option(VOREL_WARNINGS_AS_ERRORS "End the build at a warning" OFF)
if(VOREL_WARNINGS_AS_ERRORS)
    set(vorelWarningsAsErrors -Werror)
else()
    set(vorelWarningsAsErrors "")
endif()

# The warnings that find defects. -Wformat-nonliteral is not enabled, because the printf-style interface forwards
# formats.
set(VOREL_WARNINGS
    -Wall
    -Wextra
    -Wpedantic
    ${vorelWarningsAsErrors}
    -Wcast-align
    -Wcast-qual
    -Wconversion
    -Wdouble-promotion
    -Wextra-semi
    -Wformat=2
    -Wno-format-nonliteral
    -Wmissing-declarations
    -Wnon-virtual-dtor
    -Wnull-dereference
    -Wold-style-cast
    -Woverloaded-virtual
    -Wredundant-decls
    -Wshadow
    -Wsign-conversion
    -Wundef
    -Wunused
    -Wvla)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    list(APPEND VOREL_WARNINGS -Wduplicated-branches -Wduplicated-cond -Wlogical-op)
else()
    # clang reports a deprecated function that std::stable_sort of libstdc++ 12 uses.
    list(APPEND VOREL_WARNINGS -Wno-deprecated-declarations)
endif()

# Results of arithmetic are part of the interface, so each operation is rounded separately in every build.
set(VOREL_LANGUAGE_OPTIONS -ffp-contract=off -fno-fast-math)

# Microsoft's compiler and clang-cl do not accept the options above.
if(MSVC)
    set(VOREL_WARNINGS /W4)
    if(VOREL_WARNINGS_AS_ERRORS)
        list(APPEND VOREL_WARNINGS /WX)
    endif()
    set(VOREL_LANGUAGE_OPTIONS /utf-8 /permissive- /Zc:__cplusplus /Zc:preprocessor /EHsc /fp:precise)
    add_compile_definitions(_CRT_SECURE_NO_WARNINGS)
endif()

# With VOREL_TRAPS, undefined behaviour, an index past the end of a standard container, and an overwritten return
# address end the program. The checks of undefined behaviour execute a trap instruction, because GCC for mingw-w64 has
# no runtime that would report the errors. The functions of the stack protector come from the static libssp, so the DLL
# has the same imports as in other builds.
option(VOREL_TRAPS "Trap on undefined behaviour" OFF)
set(VOREL_TRAP_OPTIONS
    -fsanitize=undefined
    -fsanitize=float-cast-overflow
    -fsanitize-undefined-trap-on-error
    -fstack-protector-strong)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    list(APPEND VOREL_TRAP_OPTIONS -fsanitize=bounds-strict)
endif()
if(VOREL_TRAPS)
    set(VOREL_TRAP_LIBRARY -l:libssp.a)
endif()

function(vorel_project_options target)
    set_target_properties(${target} PROPERTIES
        CXX_STANDARD 20
        CXX_STANDARD_REQUIRED ON
        CXX_EXTENSIONS OFF)
    target_compile_options(${target} PRIVATE "$<$<COMPILE_LANGUAGE:CXX>:${VOREL_WARNINGS};${VOREL_LANGUAGE_OPTIONS}>")
    target_compile_definitions(${target} PRIVATE
        UNICODE
        _UNICODE
        WIN32_LEAN_AND_MEAN
        NOMINMAX
        $<$<OR:$<CONFIG:Debug>,$<BOOL:${VOREL_TRAPS}>>:_GLIBCXX_ASSERTIONS>)
    if(VOREL_TRAPS)
        target_compile_options(${target} PRIVATE "$<$<COMPILE_LANGUAGE:CXX>:${VOREL_TRAP_OPTIONS}>")
        target_link_libraries(${target} PRIVATE ${VOREL_TRAP_LIBRARY})
    endif()
endfunction()

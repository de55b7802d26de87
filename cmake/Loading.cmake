# Options that make the DLL small and quick to load.

# With GCC and MSVC, ADVAPI32.dll is loaded on the first call of one of its functions, because few programs call these
# functions. ADVAPI32.dll is one of the system's known DLLs, so only the system folder is searched for it. GNU's linker
# has no option for delayed loading. Instead, an import library is used whose functions call __delayLoadHelper2 of
# libdelayimp. With clang, ADVAPI32.dll is loaded together with the DLL.
#
# With GCC, each section starts at a page not only in memory but also in the DLL file, so Wine maps the sections instead
# of reading them. Windows always maps them. The linker script sections.ld joins small sections, because each
# section takes at least a page.
function(vorel_load_quickly target)
    if(MSVC)
        target_link_libraries(${target} PRIVATE advapi32 delayimp)
        target_link_options(${target} PRIVATE /DELAYLOAD:ADVAPI32.dll)
    elseif(MINGW AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        set(definition "${PROJECT_SOURCE_DIR}/cmake/advapi32.def")
        set(library "${PROJECT_BINARY_DIR}/libadvapi32-delayed.a")
        add_custom_command(OUTPUT "${library}"
            COMMAND "${CMAKE_DLLTOOL}" --input-def "${definition}" --output-delaylib "${library}"
            DEPENDS "${definition}"
            VERBATIM)
        add_custom_target(${target}DelayedImports DEPENDS "${library}")
        add_dependencies(${target} ${target}DelayedImports)
        target_link_libraries(${target} PRIVATE "${library}" delayimp)
        set(script "${PROJECT_SOURCE_DIR}/cmake/sections.ld")
        target_link_options(${target} PRIVATE -Wl,--file-alignment=4096 "-Wl,-T,${script}")
        set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS "${script}")
    else()
        target_link_libraries(${target} PRIVATE advapi32)
    endif()
endfunction()

# Compiles sources for size instead of speed in release builds. -mstringop-strategy=libcall makes GCC call memcpy to
# copy memory. Without this option, GCC would use a slow instruction, and a copy of a wide string would take a quarter
# longer.
function(vorel_compile_for_size)
    if(NOT MSVC)
        set_property(SOURCE ${ARGN} APPEND PROPERTY COMPILE_OPTIONS
            "$<$<CONFIG:Release>:-Os>"
            "$<$<AND:$<CXX_COMPILER_ID:GNU>,$<CONFIG:Release>>:-mstringop-strategy=libcall>")
    endif()
endfunction()

# Inlines fewer functions in release builds. GCC still inlines functions that are declared inline, small functions, and
# functions that are called once. clang still inlines functions with the attribute always_inline. Without the option,
# the exported copies of BaseString's inline members would be large, because they would contain all functions that they
# call. Programs rarely call these copies, because the members are inlined in programs.
function(vorel_inline_less)
    if(NOT MSVC)
        set_property(SOURCE ${ARGN} APPEND PROPERTY COMPILE_OPTIONS "$<$<CONFIG:Release>:-fno-inline-functions>")
    endif()
endfunction()

# Makes GCC align only functions and loops in release builds, not the targets of other jumps.
function(vorel_omit_alignment target)
    target_compile_options(${target} PRIVATE
        "$<$<AND:$<COMPILE_LANG_AND_ID:CXX,GNU>,$<CONFIG:Release>>:-fno-align-jumps;-fno-align-labels>")
endfunction()

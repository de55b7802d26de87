# Options that make the installed library harder to attack and its builds reproducible. The linker's defaults already
# give the library high-entropy addresses, data that cannot be executed, and no section that is both writable and
# executable.
#
# -fcf-protection is not used, because it marks the targets of indirect calls for Linux only. Windows needs tables of
# these targets, but GNU's linker cannot write such tables. The shadow stacks of Windows require a flag in the DLL file,
# but GNU's linker cannot set this flag.

# Compiles the library's objects in release builds with the stack protector and with debug information.
# src/core/StackGuard.cpp defines the guard's value, and ends the program if the guard is overwritten.
function(vorel_harden target)
    # The prefix map makes the bytes of the DLL independent of the folder of the sources.
    target_compile_options(${target} PRIVATE
        "$<$<AND:$<COMPILE_LANGUAGE:CXX>,$<CONFIG:Release>>:-fstack-protector-strong;-g;-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.>")
endfunction()

# Omits the stack protector in sources whose functions are short loops over bounded buffers on the stack, because the
# stack protector would take up to a quarter of their time on short texts. Fuzzing, the guarded heap, and tests at page
# edges check the bounds of these functions.
function(vorel_omit_stack_protector)
    if(NOT MSVC)
        set_property(SOURCE ${ARGN} APPEND PROPERTY COMPILE_OPTIONS "$<$<CONFIG:Release>:-fno-stack-protector>")
    endif()
endfunction()

# A release DLL has neither symbols nor debug information; both are in <name>.debug in the same folder, where debuggers
# find the file. The DLL does not contain the build time.
function(vorel_separate_debug_information target)
    if(NOT MINGW)
        return()
    endif()
    target_link_options(${target} PRIVATE -Wl,--no-insert-timestamp)
    add_custom_command(TARGET ${target} POST_BUILD
        COMMAND "$<$<CONFIG:Release>:${CMAKE_OBJCOPY};--preserve-dates;--only-keep-debug;$<TARGET_FILE:${target}>;$<TARGET_FILE:${target}>.debug>"
        COMMAND "$<$<CONFIG:Release>:${CMAKE_OBJCOPY};--preserve-dates;--strip-all;--add-gnu-debuglink=$<TARGET_FILE:${target}>.debug;$<TARGET_FILE:${target}>>"
        COMMAND_EXPAND_LISTS)
endfunction()

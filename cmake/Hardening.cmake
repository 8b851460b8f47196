# What makes a mistake in the memory of a program end it, where somebody could use the mistake otherwise. Only in builds that
# people get: in the others the sanitizers look for such mistakes.

include(CheckPIESupported)

# ferrobank_harden(TARGET): for everything that uses the interface library TARGET. Fortified functions need optimised code,
# which some test programs are not.
function(ferrobank_harden target)
    if(NOT CMAKE_BUILD_TYPE MATCHES "Rel")
        return()
    endif()
    target_compile_options(
        ${target}
        INTERFACE -fstack-protector-strong
                  "$<$<NOT:$<BOOL:$<TARGET_PROPERTY:FERROBANK_TEST>>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
    target_link_options(${target} INTERFACE -Wl,-z,relro -Wl,-z,now)
endfunction()

# ferrobank_harden_for_root(TARGET): in addition, for what root runs too: the standard library checks how it is called. For
# what uses an interface library, else for the target itself alone.
function(ferrobank_harden_for_root target)
    if(NOT CMAKE_BUILD_TYPE MATCHES "Rel")
        return()
    endif()
    get_target_property(type ${target} TYPE)
    set(reach PRIVATE)
    if(type STREQUAL "INTERFACE_LIBRARY")
        set(reach INTERFACE)
    endif()
    target_compile_definitions(${target} ${reach} _GLIBCXX_ASSERTIONS)
    target_compile_options(${target} ${reach} -fstack-clash-protection)
    target_link_options(${target} ${reach} -Wl,-z,noexecstack)
endfunction()

# Warnings for our own targets. Headers of dependencies come in as system headers and stay silent.
# Sign conversions are left out: Qt counts in int, the standard library in size_t, and the casts
# that silence them would hide more faults than they show.
function(prm_enable_warnings target)
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic
        -Wshadow -Wconversion -Wno-sign-conversion
        -Wnon-virtual-dtor -Woverloaded-virtual
        -Wcast-qual -Wextra-semi -Wundef)
    if(PRM_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()

include(Warnings)

# What every target of this project is built with, and no user of it needs to be.
# Contraction is off because results are promised to the last bit, whatever the processor can fuse. Calls within the
# library may be inlined: nobody is meant to put other functions in the place of its own when it is loaded.
function(prm_house_rules target)
    prm_enable_warnings(${target})
    target_compile_definitions(${target} PRIVATE QT_NO_KEYWORDS)
    target_compile_options(${target} PRIVATE -ffp-contract=off -fno-semantic-interposition)
endfunction()

# Every source and header below the current folder. Headers take part so that moc sees them all.
function(prm_glob_sources result)
    file(GLOB_RECURSE found CONFIGURE_DEPENDS
        "${CMAKE_CURRENT_SOURCE_DIR}/*.h" "${CMAKE_CURRENT_SOURCE_DIR}/*.hpp" "${CMAKE_CURRENT_SOURCE_DIR}/*.cpp")
    set(${result} "${found}" PARENT_SCOPE)
endfunction()

# qel_add_plugin(<name> <source>...)
#
# Builds a loadable module <name>.so that the library finds under "<name>" in plugins.cfg (or under the
# file name "<name>.dll"). It sees the public headers alone and exports nothing but what its sources mark
# with QEL_API.
#
# QEL_PLUGIN_OUTPUT_DIRECTORY, if set, says where the module goes in the build tree.
function(qel_add_plugin name)
    add_library(${name} MODULE ${ARGN})
    target_link_libraries(${name} PRIVATE Qel::System)
    set_target_properties(${name} PROPERTIES
        PREFIX ""
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)
    # A GNU-unique symbol would keep the file mapped after it has been unloaded.
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        target_compile_options(${name} PRIVATE -fno-gnu-unique)
    endif()
    if(QEL_PLUGIN_OUTPUT_DIRECTORY)
        set_target_properties(${name} PROPERTIES
            LIBRARY_OUTPUT_DIRECTORY "${QEL_PLUGIN_OUTPUT_DIRECTORY}")
    endif()
endfunction()

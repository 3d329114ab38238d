# qel_add_plugin(<name> <source>...)
#
# Builds a loadable module <name>.so that the library finds under "<name>" in plugins.cfg (or under the
# file name "<name>.dll"). It sees the public headers alone and exports nothing but the extern "C" functions
# that its sources mark with QEL_API.
#
# QEL_PLUGIN_OUTPUT_DIRECTORY, if set, says where the module goes in the build tree.
set(QEL_PLUGIN_MAP ${CMAKE_CURRENT_LIST_DIR}/plugin.map)
function(qel_add_plugin name)
    add_library(${name} MODULE ${ARGN})
    target_link_libraries(${name} PRIVATE Qel::System)
    set_target_properties(${name} PROPERTIES
        PREFIX ""
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)
    target_link_options(${name} PRIVATE "LINKER:--version-script=${QEL_PLUGIN_MAP}")
    set_property(TARGET ${name} APPEND PROPERTY LINK_DEPENDS ${QEL_PLUGIN_MAP})
    # A GNU-unique symbol would keep the file mapped after it has been unloaded.
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        target_compile_options(${name} PRIVATE -fno-gnu-unique)
    endif()
    if(QEL_PLUGIN_OUTPUT_DIRECTORY)
        set_target_properties(${name} PROPERTIES
            LIBRARY_OUTPUT_DIRECTORY "${QEL_PLUGIN_OUTPUT_DIRECTORY}")
    endif()
endfunction()

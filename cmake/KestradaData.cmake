# The program finds its data folders beside its executable. This target keeps
# a copy of data/ next to the executables in the build folder, so that every
# program, test and benchmark runs straight from there.
file(GLOB_RECURSE KESTRADA_DATA_FILES CONFIGURE_DEPENDS
     RELATIVE "${CMAKE_SOURCE_DIR}/data" "${CMAKE_SOURCE_DIR}/data/*")
set(KESTRADA_DATA_OUTPUTS)
foreach(file IN LISTS KESTRADA_DATA_FILES)
    set(out "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${file}")
    if(file STREQUAL "shortcuts.xml")
        # The program writes the user's bindings over this file when it
        # ends: the default is copied only where there is none yet.
        add_custom_command(OUTPUT "${out}"
            COMMAND ${CMAKE_COMMAND} -E copy "${CMAKE_SOURCE_DIR}/data/${file}" "${out}"
            COMMENT "Copying data/${file}" VERBATIM)
    else()
        add_custom_command(OUTPUT "${out}"
            COMMAND ${CMAKE_COMMAND} -E copy_if_different
                    "${CMAKE_SOURCE_DIR}/data/${file}" "${out}"
            DEPENDS "${CMAKE_SOURCE_DIR}/data/${file}"
            COMMENT "Copying data/${file}" VERBATIM)
    endif()
    list(APPEND KESTRADA_DATA_OUTPUTS "${out}")
endforeach()

# Installed the same way: data folders beside the executables.
include(GNUInstallDirs)
set(KESTRADA_INSTALL_DIR "${CMAKE_INSTALL_LIBDIR}/kestrada")

# Only the program shows icons: the iconsets take theirs from the icon theme.
if(KESTRADA_BUILD_GUI)
    include(${CMAKE_CURRENT_LIST_DIR}/KestradaIconsets.cmake)
endif()

add_custom_target(kestrada-data ALL DEPENDS ${KESTRADA_DATA_OUTPUTS})
if(EXISTS "${CMAKE_SOURCE_DIR}/data")
    install(DIRECTORY "${CMAKE_SOURCE_DIR}/data/" DESTINATION "${KESTRADA_INSTALL_DIR}")
endif()

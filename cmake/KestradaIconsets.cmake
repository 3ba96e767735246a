# Completes the iconsets beside the program. Included by KestradaData.cmake
# when the GUI is built; appends its outputs to KESTRADA_DATA_OUTPUTS.
#
# An Iconset.xml names each icon file relative to its own folder. Two kinds
# of file are not in data/ and are made here:
#
#  - "breeze/..." and "breeze-dark/...": icons of Debian's breeze-icon-theme
#    (LGPL-3, KDE), copied from the installed theme. They aren't committed:
#    the theme is a package every build machine has anyway.
#  - our own drawings in the Dark set: each is made from the Classic drawing
#    of the same name by giving it Breeze-Dark's text colour, so that every
#    icon has one source.
#
# Iconset.xml is read at configure time; editing one re-runs the configure.

set(KESTRADA_ICON_THEME_DIR "/usr/share/icons" CACHE PATH
    "Folder of the installed icon themes (breeze, breeze-dark) that the iconsets take icons from")

# The text colour of our own drawings, and what it becomes in the Dark set:
# the colours of Breeze and Breeze-Dark, so that ours match the theme's.
set(KESTRADA_ICON_LIGHT_TEXT "#232629")
set(KESTRADA_ICON_DARK_TEXT "#eff0f1")

set(_iconsets_src "${CMAKE_SOURCE_DIR}/data/iconsets")
file(GLOB _iconset_files CONFIGURE_DEPENDS "${_iconsets_src}/*/Iconset.xml")
set(_missing_theme_files)
set(_missing_own_files)
foreach(_xml IN LISTS _iconset_files)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${_xml}")
    get_filename_component(_set_dir "${_xml}" DIRECTORY)
    get_filename_component(_set "${_set_dir}" NAME)
    set(_out_dir "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/iconsets/${_set}")

    file(READ "${_xml}" _text)
    # Comments may quote file names; only the attributes count.
    string(REGEX REPLACE "<!--([^-]|-[^-])*-->" "" _text "${_text}")
    string(REGEX MATCHALL "file=\"[^\"]*\"" _refs "${_text}")
    list(REMOVE_DUPLICATES _refs)
    foreach(_ref IN LISTS _refs)
        string(REGEX REPLACE "^file=\"(.*)\"$" "\\1" _file "${_ref}")
        if(_file MATCHES "(^|/)\\.\\.(/|$)" OR IS_ABSOLUTE "${_file}")
            message(FATAL_ERROR "data/iconsets/${_set}/Iconset.xml: \"${_file}\" "
                                "must be a path inside the iconset's folder")
        endif()
        set(_out "${_out_dir}/${_file}")
        get_filename_component(_out_sub "${_file}" DIRECTORY)

        if(_file MATCHES "^breeze(-dark)?/")
            set(_src "${KESTRADA_ICON_THEME_DIR}/${_file}")
            if(NOT EXISTS "${_src}")
                list(APPEND _missing_theme_files "${_src} (named by data/iconsets/${_set}/Iconset.xml)")
                continue()
            endif()
            # Many theme files are links to another icon: copy what they
            # point to, and depend on that.
            file(REAL_PATH "${_src}" _src)
            add_custom_command(OUTPUT "${_out}"
                COMMAND ${CMAKE_COMMAND} -E copy_if_different "${_src}" "${_out}"
                DEPENDS "${_src}"
                COMMENT "Copying icon ${_set}/${_file}" VERBATIM)
            list(APPEND KESTRADA_DATA_OUTPUTS "${_out}")
            get_filename_component(_name "${_file}" NAME)
            install(FILES "${_src}" RENAME "${_name}"
                    DESTINATION "${KESTRADA_INSTALL_DIR}/iconsets/${_set}/${_out_sub}")
        elseif(EXISTS "${_set_dir}/${_file}")
            # Drawn for this set: copied with the rest of data/.
        elseif(_set STREQUAL "Dark" AND EXISTS "${_iconsets_src}/Classic/${_file}")
            set(_src "${_iconsets_src}/Classic/${_file}")
            add_custom_command(OUTPUT "${_out}"
                COMMAND ${CMAKE_COMMAND} "-DINPUT=${_src}" "-DOUTPUT=${_out}"
                        "-DFROM=${KESTRADA_ICON_LIGHT_TEXT}" "-DTO=${KESTRADA_ICON_DARK_TEXT}"
                        -P "${CMAKE_SOURCE_DIR}/cmake/KestradaRecolour.cmake"
                DEPENDS "${_src}" "${CMAKE_SOURCE_DIR}/cmake/KestradaRecolour.cmake"
                COMMENT "Making icon ${_set}/${_file}" VERBATIM)
            list(APPEND KESTRADA_DATA_OUTPUTS "${_out}")
            install(FILES "${_out}" DESTINATION "${KESTRADA_INSTALL_DIR}/iconsets/${_set}/${_out_sub}")
        else()
            list(APPEND _missing_own_files "data/iconsets/${_set}/${_file}")
        endif()
    endforeach()
endforeach()

if(_missing_own_files)
    list(JOIN _missing_own_files "\n  " _list)
    message(FATAL_ERROR "Icons named by an Iconset.xml that don't exist:\n  ${_list}")
endif()
if(_missing_theme_files)
    list(JOIN _missing_theme_files "\n  " _list)
    message(FATAL_ERROR "Icons of the Breeze theme that the iconsets use are missing:\n  ${_list}\n"
                        "Install Debian's package breeze-icon-theme, or set KESTRADA_ICON_THEME_DIR "
                        "to the folder that holds the breeze and breeze-dark themes.")
endif()

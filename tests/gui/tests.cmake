kestrada_add_gui_test(startup)
kestrada_add_gui_test(qinterface)
kestrada_add_gui_test(qprogress)
kestrada_add_gui_test(calculator)
kestrada_add_gui_test(helpmenu)

# Two real instances of the program: the second hands a file over and ends.
kestrada_add_test(handover_processes LIBS kestrada-core LABELS gui)
add_dependencies(tst_handover_processes kestrada)
kestrada_add_gui_test(mugendlg)
kestrada_add_gui_test(mugrundlg)
kestrada_add_gui_test(bakdlg)

# Two tiny languages made by lrelease, beside the test, and the program's
# own languages with their info.xml from data/.
kestrada_add_gui_test(qtranslationunit)
set(fixture_ts "${KESTRADA_TEST_DATA_DIR}/translations/first.ts"
               "${KESTRADA_TEST_DATA_DIR}/translations/second.ts")
set_source_files_properties(${fixture_ts} PROPERTIES
    OUTPUT_LOCATION "${CMAKE_BINARY_DIR}/tests/translation-fixtures")
qt_add_lrelease(tst_qtranslationunit TS_FILES ${fixture_ts} OPTIONS -silent NO_GLOBAL_TARGET)
add_dependencies(tst_qtranslationunit kestrada-data)
kestrada_add_gui_test(qactionmanager)
kestrada_add_gui_test(frame)
kestrada_add_gui_test(appearance)
kestrada_add_gui_test(appdata)
kestrada_add_gui_test(qsoundseditor)
add_dependencies(tst_appdata kestrada-data)
kestrada_add_gui_test(errordlg)
add_dependencies(tst_errordlg fakeengine)
kestrada_add_gui_test(mainwindow)
add_dependencies(tst_mainwindow kestrada-data)

# The frame with stand-in editors, to look at and to drive by hand.
add_executable(kestrada-framedemo "${CMAKE_CURRENT_LIST_DIR}/framedemo.cpp" "${CMAKE_CURRENT_LIST_DIR}/logeditor.h")
target_link_libraries(kestrada-framedemo PRIVATE kestrada-gui)
target_include_directories(kestrada-framedemo PRIVATE "${CMAKE_CURRENT_LIST_DIR}")
add_dependencies(kestrada-framedemo kestrada-data)
kestrada_add_gui_test(options)

# The real program under Xvfb, driven with xdotool; skipped without them.
# Its pictures are left in pictures/drive_kfm of the build folder.
add_test(NAME drive_kfm
         COMMAND sh "${CMAKE_CURRENT_LIST_DIR}/drive_kfm.sh" "${CMAKE_BINARY_DIR}" "${KESTRADA_CORPUS_DIR}"
                 "${CMAKE_BINARY_DIR}/pictures/drive_kfm")
set_tests_properties(drive_kfm PROPERTIES LABELS gui SKIP_RETURN_CODE 77 TIMEOUT 180 RUN_SERIAL TRUE)

kestrada_add_core_test(qmugenmodel)
kestrada_add_core_test(qmessages)
kestrada_add_core_test(qproject)
kestrada_add_core_test(qhandover)
kestrada_add_core_test(qsyntaxtexteditor)
kestrada_add_core_test(qdefinitions)
kestrada_add_core_test(qtexttokenizer)
kestrada_add_core_test(qelementtexteditor)
kestrada_add_core_test(qsyntaxhierarchy)
kestrada_add_core_test(qmugensyntaxproperties)
kestrada_add_core_test(syntaxmugen)
# It compares data/ with the copy the programs read beside them.
add_dependencies(tst_syntaxmugen kestrada-data)
kestrada_add_core_test(filelookup)
kestrada_add_core_test(qanimations)
kestrada_add_core_test(imagecodecs)
kestrada_add_core_test(qstreamcache)
kestrada_add_core_test(qprojectfiles)
kestrada_add_core_test(qprojectbackup)
kestrada_add_core_test(qfilewatchermanager)
kestrada_add_core_test(qmugensyntaxprocessor)
kestrada_add_core_test(syntaxreferences)
# Writes the expected files of the syntax samples (tests/data/syntax/*.ref)
# from what the processor does now; review the diff before committing it.
add_custom_target(update-syntax-references
    COMMAND ${CMAKE_COMMAND} -E env KESTRADA_UPDATE_REFERENCES=1 QT_QPA_PLATFORM=offscreen
            $<TARGET_FILE:tst_syntaxreferences>
    DEPENDS tst_syntaxreferences
    COMMENT "Writing the references of the syntax samples"
    VERBATIM)
kestrada_add_core_test(qsprites)
kestrada_add_core_test(spritecommands)
kestrada_add_core_test(palettefiles)
kestrada_add_core_test(quantiser)
kestrada_add_core_test(qsounds)
kestrada_add_core_test(qmugenrun)
# The stand-in engine of the test runs: plain C++, started as an outside
# program. It lands beside the tests, where tst_qmugenrun looks for it.
add_executable(fakeengine "${CMAKE_CURRENT_LIST_DIR}/../support/fakeengine.cpp")
set_target_properties(fakeengine PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
add_dependencies(tst_qmugenrun fakeengine)
kestrada_add_core_test(sfffile)
kestrada_add_core_test(calculatorengine)

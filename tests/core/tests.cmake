kestrada_add_core_test(qmugenmodel)
kestrada_add_core_test(qmessages)
kestrada_add_core_test(qproject)
kestrada_add_core_test(qhandover)
kestrada_add_core_test(qsyntaxtexteditor)
kestrada_add_core_test(qmugensyntaxproperties)
kestrada_add_core_test(syntaxmugen)
# It compares data/ with the copy the programs read beside them.
add_dependencies(tst_syntaxmugen kestrada-data)

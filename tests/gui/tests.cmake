kestrada_add_gui_test(startup)
kestrada_add_gui_test(qinterface)
kestrada_add_gui_test(qprogress)

# Two real instances of the program: the second hands a file over and ends.
kestrada_add_test(handover_processes LIBS kestrada-core LABELS gui)
add_dependencies(tst_handover_processes kestrada)
kestrada_add_gui_test(mugendlg)
kestrada_add_gui_test(mugrundlg)

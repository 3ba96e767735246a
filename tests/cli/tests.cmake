kestrada_add_test(cli LIBS kestrada-core LABELS cli)
add_dependencies(tst_cli kestrada-cli)

# The core and the command-line tool never load QtWidgets: they run where
# there is no desktop at all.
add_test(NAME no_widgets_in_cli
         COMMAND sh -c "! ldd \"$<TARGET_FILE:kestrada-cli>\" | grep -i widgets")
add_test(NAME no_widgets_in_core
         COMMAND sh -c "! ldd \"$<TARGET_FILE:tst_qmugenmodel>\" | grep -i widgets")
set_property(TEST no_widgets_in_cli no_widgets_in_core PROPERTY LABELS cli)

# Sound files and test runs through the real program, with the stand-in engine.
kestrada_add_test(clisounds LIBS kestrada-core LABELS cli)
add_dependencies(tst_clisounds kestrada-cli fakeengine)

# Sprite files through the real program.
kestrada_add_test(clisprites LIBS kestrada-core LABELS cli)
add_dependencies(tst_clisprites kestrada-cli)

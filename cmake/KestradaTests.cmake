# Shared template of the test executables: one Qt Test program per unit,
# registered with CTest, run on the offscreen platform with a private runtime
# folder, and told where the real-file corpus and the small fixtures are.

set(KESTRADA_TEST_DATA_DIR "${CMAKE_SOURCE_DIR}/tests/data")

function(kestrada_test_environment test)
    set(runtime "${CMAKE_BINARY_DIR}/test-runtime")
    file(MAKE_DIRECTORY "${runtime}")
    file(CHMOD "${runtime}" DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
    set_property(TEST ${test} APPEND PROPERTY ENVIRONMENT
        "QT_QPA_PLATFORM=offscreen"
        "XDG_RUNTIME_DIR=${runtime}"
        "ASAN_OPTIONS=detect_leaks=1:abort_on_error=1"
        "UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1")
endfunction()

# kestrada_add_test(<unit> LIBS <libs...> [SOURCES <extra...>] [LABELS <labels...>])
# builds tst_<unit> from tst_<unit>.cpp beside the list file that calls it.
function(kestrada_add_test unit)
    cmake_parse_arguments(T "" "" "LIBS;SOURCES;LABELS" ${ARGN})
    set(target tst_${unit})
    list(TRANSFORM T_SOURCES PREPEND "${CMAKE_CURRENT_LIST_DIR}/")
    add_executable(${target} "${CMAKE_CURRENT_LIST_DIR}/tst_${unit}.cpp" ${T_SOURCES})
    target_link_libraries(${target} PRIVATE ${T_LIBS} Qt6::Test kestrada-testsupport)
    if("kestrada-gui" IN_LIST T_LIBS)
        target_precompile_headers(${target} REUSE_FROM kestrada-testsupport-gui)
    else()
        target_precompile_headers(${target} REUSE_FROM kestrada-testsupport)
    endif()
    set_target_properties(${target} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
    add_test(NAME ${unit} COMMAND ${target})
    kestrada_test_environment(${unit})
    if(T_LABELS)
        set_property(TEST ${unit} PROPERTY LABELS ${T_LABELS})
    endif()
endfunction()

function(kestrada_add_core_test unit)
    kestrada_add_test(${unit} LIBS kestrada-core LABELS core ${ARGN})
endfunction()

function(kestrada_add_gui_test unit)
    kestrada_add_test(${unit} LIBS kestrada-gui LABELS gui ${ARGN})
endfunction()

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
# builds tst_<unit> from tst_<unit>.cpp in the calling folder.
function(kestrada_add_test unit)
    cmake_parse_arguments(T "" "" "LIBS;SOURCES;LABELS" ${ARGN})
    set(target tst_${unit})
    add_executable(${target} tst_${unit}.cpp ${T_SOURCES})
    target_link_libraries(${target} PRIVATE ${T_LIBS} Qt6::Test kestrada-testsupport)
    target_compile_definitions(${target} PRIVATE
        TEST_DATA_DIR="${KESTRADA_TEST_DATA_DIR}"
        KESTRADA_CORPUS_DIR="${KESTRADA_CORPUS_DIR}"
        KESTRADA_BIN_DIR="${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
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

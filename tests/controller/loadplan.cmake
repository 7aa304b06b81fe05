# The load plan, shared by the controller and zelvane-inspect: both over the same
# folders must agree on what loads, in which order, and what is dropped.
zelvane_add_test(tst_loadplan SOURCES tst_loadplan.cpp loadingfixture.h)
target_compile_definitions(tst_loadplan PRIVATE
    "ZELVANE_INSPECT_EXECUTABLE=\"$<TARGET_FILE:zelvane-inspect>\"")
add_dependencies(tst_loadplan zelvane-inspect)

# Tests of the dependency ordering of the load list.
zelvane_add_test(tst_dependencysorting SOURCES tst_dependencysorting.cpp)

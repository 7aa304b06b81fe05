# Tests of the controller itself: the singleton, its configuration and its pool. Most
# scenarios need a controller that nothing has touched yet, so every test function
# runs in a process of its own.
zelvane_add_test(tst_plugincontroller SOURCES tst_plugincontroller.cpp ONE_PROCESS_PER_FUNCTION)

# Tests of the loading sequence, the plugin command-line options and the controller's
# plugin state.
#
# The controller is one object per process, and a load leaves lasting state behind:
# opened libraries, the list of loaded plugins, the model, the error text. So every
# scenario gets a process of its own: every test function, and in tst_loadplugins every
# row of a data-driven function too ("function:row", Qt Test's own way of running one
# row). CTest reads the functions and rows from the executables.

set(loading_plugins
    alpha beta shell notes tags links outline preview charts tables
    editor spelling export twice plain bare)
foreach(plugin IN LISTS loading_plugins)
    zelvane_add_test_plugin(zt_loading_${plugin} METADATA plugins/loading_${plugin}.json)
endforeach()
# Categories that the controller never loads, on purpose.
zelvane_add_test_plugin(zt_loading_lower METADATA plugins/loading_lower.json NO_METADATA_CHECK)
zelvane_add_test_plugin(zt_loading_sidebar METADATA plugins/loading_sidebar.json
    NO_METADATA_CHECK)
# A core plugin built for another host.
zelvane_add_test_plugin(zt_loading_foreign METADATA plugins/loading_foreign.json
    IID "org.zelvane.Foreign/1.0")

zelvane_add_test(tst_loadplugins SOURCES tst_loadplugins.cpp loadingfixture.h ONE_PROCESS_PER_ROW)

zelvane_add_test(tst_controllerstate SOURCES tst_controllerstate.cpp loadingfixture.h
    ONE_PROCESS_PER_FUNCTION)

zelvane_add_test(tst_pluginsoptions SOURCES tst_pluginsoptions.cpp loadingfixture.h
    ONE_PROCESS_PER_FUNCTION)

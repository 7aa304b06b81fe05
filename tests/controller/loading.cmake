# Tests of the loading sequence, the plugin command-line options and the controller's
# plugin state.
#
# The controller is one object per process, and a load leaves lasting state behind:
# opened libraries, the list of loaded plugins, the model, the error text. So every
# scenario gets a process of its own: each test function is listed below, and a
# data-driven function that loads plugins lists each of its rows as
# "function:row", which is Qt Test's own way of running one row.

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

zelvane_add_test(tst_loadplugins
    SOURCES tst_loadplugins.cpp loadingfixture.h
    FUNCTIONS
        "noCorePlugin:empty directory"
        "noCorePlugin:missing directory"
        "noCorePlugin:foreign interface identifier"
        "noCorePlugin:extensions only"
        "noCorePlugin:core in lower case"
        "coreChoice:first disabled, second enabled"
        "coreChoice:first disabled, second by default"
        "coreChoice:both disabled"
        "coreChoice:both enabled"
        "coreChoice:first enabled, second disabled"
        "coreChoice:both by default"
        disabledExtensionsAreNotLoaded
        otherCategoriesAreNeverLoaded
        independentPluginsLoadInDiscoveryOrder
        coreMovesBehindItsDependency
        dependencyOnDisabledExtensionDropsThePlugin
        stuckOrderingDropsOnlyThePluginAtTheBoundary
        failureInTheMiddle
        failedLoadKeepsTheModel
        "laterSuccessKeepsTheErrorText:after a missing core plugin"
        "laterSuccessKeepsTheErrorText:after a failing plugin"
        secondLoadAppends
        secondLoadOfTheSameDirectory
        everyPluginReceivesTheWholeArgumentMap)

zelvane_add_test(tst_controllerstate
    SOURCES tst_controllerstate.cpp loadingfixture.h
    FUNCTIONS
        isEnabled
        pluginsModelIsNullUntilTheFirstSuccess
        shutdownWithNothingLoaded
        shutdownUnloadsInReverseLoadOrder
        shutdownTwice
        setArgumentsReachesOnlyTheNextLoad)

zelvane_add_test(tst_pluginsoptions
    SOURCES tst_pluginsoptions.cpp loadingfixture.h
    FUNCTIONS
        noOptions
        declaredOptions
        sameNameClashesOnlyInTheParser
        parsedOptionsReachInitialize)

# Tests of plugin discovery: which files of a folder become plugins, what is logged
# for the others, and the order of the result.

set(discovery_plugins "${CMAKE_CURRENT_SOURCE_DIR}/plugins")
zelvane_add_test_plugin(zt_discovery_alpha METADATA "${discovery_plugins}/discovery_alpha.json")
zelvane_add_test_plugin(zt_discovery_beta METADATA "${discovery_plugins}/discovery_beta.json")
zelvane_add_test_plugin(zt_discovery_alpha_twin
    METADATA "${discovery_plugins}/discovery_alpha_twin.json")
# Categories that no loading sequence acts on, on purpose.
zelvane_add_test_plugin(zt_discovery_loose
    METADATA "${discovery_plugins}/discovery_loose.json" NO_METADATA_CHECK)
zelvane_add_test_plugin(zt_discovery_minor
    METADATA "${discovery_plugins}/discovery_minor.json" NO_METADATA_CHECK)
zelvane_add_test_plugin(zt_discovery_stranger
    METADATA "${discovery_plugins}/discovery_stranger.json" IID "org.zelvane.Other/1.0")
zelvane_add_test_plugin(zt_discovery_nometadata)
zelvane_add_test_plugin(zt_discovery_noname
    METADATA "${discovery_plugins}/discovery_noname.json" NO_METADATA_CHECK)
zelvane_add_test_plugin(zt_discovery_badarguments
    METADATA "${discovery_plugins}/discovery_badarguments.json" NO_METADATA_CHECK)

# Discovery never loads a plugin and only reads the controller's identifier, so one
# process serves every scenario.
zelvane_add_test(tst_plugindiscovery SOURCES tst_plugindiscovery.cpp)

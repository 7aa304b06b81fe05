# plugincontroller tests

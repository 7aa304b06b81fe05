// A shared object that is not a Qt plugin: it has no plugin metadata section.
extern "C" int zelvane_not_a_plugin_answer()
{
    return 42;
}

# Sourced by build.sh demo (ROOT, JOBS, ensure_packages, configure_and_build are set).
#
# Builds the tree in build/ (as ./build.sh test does), prints what the demo host loads,
# renders its two plugin settings screens to PNG files, and opens the demo's window
# when there is a display.

configure_and_build "$ROOT/build"

demo="$ROOT/build/examples/host/zelvane-demo"
out="$ROOT/build/demo"
mkdir -p "$out"
# The selection that the window shows and saves; it persists across runs, so a change
# made in the plugins dialog shows in the next run's list.
settings="$out/zelvane-demo.ini"

echo
echo "== zelvane-demo --list"
"$demo" --list --settings "$settings"

# The screenshots always show the example plugins' own defaults.
shots_settings=$(mktemp -d)
trap 'rm -rf "$shots_settings"' EXIT
"$demo" --settings "$shots_settings/defaults.ini" --screenshot "$out/plugins-dialog.png" 2>/dev/null
"$demo" --settings "$shots_settings/defaults.ini" --qml --screenshot "$out/plugins-qml.png" 2>/dev/null

echo
echo "Screenshots:"
echo "  $out/plugins-dialog.png   (the widgets dialog)"
echo "  $out/plugins-qml.png      (the QML page, --qml)"
echo "Plugin selection of the demo: $settings"
echo "Inspect the plugin folder:    $ROOT/build/tools/inspect/zelvane-inspect $ROOT/build/examples/plugins --iid org.zelvane.DocumentEditor/1.0 --settings $settings"

if [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ]; then
    echo
    echo "Opening the demo window (File > Plugins… shows the settings screen)."
    "$demo" --settings "$settings"
else
    echo
    echo "No display (\$DISPLAY and \$WAYLAND_DISPLAY are unset): not opening the window."
    echo "On a desktop: $demo --settings $settings [--qml]"
fi

# Qt for Windows, cross-compiled from Debian's qt6-base source with the host's
# moc, rcc and uic. Sourced by scripts/windows; needs SRC (the unpacked
# source), PREFIX (where it installs), WORK (a build folder), TOOLCHAIN.
# Only what our programs use: Core, Gui, Widgets, PrintSupport, the Windows
# platform plugin and the Windows styles. OpenGL stays on because the Windows
# platform plugin of 6.4 does not compile without it; the tablet events are off
# because Debian's repack leaves out the Wintab header they need.
build_qt() {
  cmake -S "$SRC" -B "$WORK" -G Ninja \
    -DCMAKE_TOOLCHAIN_FILE="$TOOLCHAIN" \
    -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_INSTALL_PREFIX="$PREFIX" \
    -DQT_HOST_PATH=/usr \
    -DQT_HOST_PATH_CMAKE_DIR=/usr/lib/x86_64-linux-gnu/cmake \
    -DBUILD_SHARED_LIBS=ON \
    -DQT_BUILD_EXAMPLES=OFF -DQT_BUILD_TESTS=OFF -DQT_BUILD_BENCHMARKS=OFF \
    -DQT_BUILD_MANUAL_TESTS=OFF -DQT_BUILD_TOOLS_WHEN_CROSSCOMPILING=OFF \
    -DFEATURE_dbus=OFF -DFEATURE_sql=OFF -DFEATURE_network=OFF \
    -DFEATURE_testlib=OFF -DFEATURE_concurrent=OFF -DFEATURE_xml=OFF \
    -DFEATURE_printsupport=ON -DFEATURE_widgets=ON -DFEATURE_gui=ON \
    -DFEATURE_opengl=ON -DFEATURE_opengl_desktop=ON \
    -DFEATURE_tabletevent=OFF -DFEATURE_vulkan=OFF \
    -DFEATURE_system_zlib=OFF -DFEATURE_system_pcre2=OFF \
    -DFEATURE_system_freetype=OFF -DFEATURE_system_harfbuzz=OFF \
    -DFEATURE_system_png=OFF -DFEATURE_system_jpeg=OFF \
    -DFEATURE_system_doubleconversion=OFF -DFEATURE_sql_sqlite=OFF \
    -DINPUT_openssl=no &&
    cmake --build "$WORK" -j "$(nproc)" &&
    cmake --install "$WORK"
}

# The C libraries of our programs for Windows, cross-compiled from Debian's
# source packages into one folder PREFIX: OpenSSL (so libpq's sslmode works as
# on Linux), libpq from postgresql-15, libxlsxwriter against Debian's MinGW
# zlib. Sourced by scripts/windows; needs PREFIX, WORK, TOOLCHAIN and the
# unpacked sources OPENSSL_SRC, PG_SRC, XLSX_SRC.
TRIPLE=x86_64-w64-mingw32

build_openssl() {
  local b=$WORK/openssl
  rm -rf "$b" && cp -a "$OPENSSL_SRC" "$b"
  (cd "$b" &&
    ./Configure mingw64 shared no-tests no-engine no-legacy \
      --prefix="$PREFIX" --libdir=lib --openssldir='C:/Program Files/Common Files/SSL' \
      CC=$TRIPLE-gcc-posix AR=$TRIPLE-ar RANLIB=$TRIPLE-ranlib RC=$TRIPLE-windres &&
    make -j "$(nproc)" build_libs &&
    make install_dev)
}

build_libpq() {
  local b=$WORK/postgresql
  rm -rf "$b" && cp -a "$PG_SRC" "$b"
  (cd "$b" &&
    ./configure --host=$TRIPLE --prefix="$PREFIX" \
      --with-ssl=openssl --without-readline --without-zlib --without-icu \
      --without-llvm --without-gssapi --without-ldap \
      CC=$TRIPLE-gcc-posix CPPFLAGS="-I$PREFIX/include" LDFLAGS="-L$PREFIX/lib" &&
    make -C src/include -j "$(nproc)" &&
    make -C src/common -j "$(nproc)" &&
    make -C src/port -j "$(nproc)" &&
    make -C src/interfaces/libpq -j "$(nproc)" &&
    make -C src/interfaces/libpq install &&
    # libpq-fe.h includes these two.
    install -m 644 src/include/postgres_ext.h src/include/pg_config_ext.h "$PREFIX/include/")
}

build_xlsxwriter() {
  local b=$WORK/libxlsxwriter
  cmake -S "$XLSX_SRC" -B "$b" -G Ninja \
    -DCMAKE_TOOLCHAIN_FILE="$TOOLCHAIN" -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_INSTALL_PREFIX="$PREFIX" -DCMAKE_INSTALL_LIBDIR=lib \
    -DBUILD_SHARED_LIBS=ON -DBUILD_TESTS=OFF -DBUILD_EXAMPLES=OFF &&
    cmake --build "$b" -j "$(nproc)" &&
    cmake --install "$b"
}

# Each step's failure stops the whole (errexit does not reach into a
# function run as the left side of ||).
build_libs() {
  mkdir -p "$WORK" && build_openssl && build_libpq && build_xlsxwriter
}

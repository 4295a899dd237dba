# Shared by scripts/demo and scripts/bench: the private PostgreSQL cluster of
# the demo (data in .demo-data/ of the checkout, 127.0.0.1:54329) and its
# databases. Source it after setting QUARV_ROOT to the checkout.

QUARV_DEMO_PORT=54329
QUARV_DEMO_DIR="$QUARV_ROOT/.demo-data"
QUARV_DEMO_USER=quarv
QUARV_DEMO_PASSWORD=kadrim

demo_die() {
  echo "demo: $*" >&2
  exit 1
}

demo_pg_bindir() {
  local v
  for v in $(ls /usr/lib/postgresql 2>/dev/null | sort -rn); do
    if [ -x "/usr/lib/postgresql/$v/bin/initdb" ]; then
      echo "/usr/lib/postgresql/$v/bin"
      return
    fi
  done
  demo_die "no PostgreSQL server binaries found; run scripts/setup"
}

# The server refuses to run as root: as root it runs as the postgres account.
demo_as_server() {
  if [ "$(id -u)" -eq 0 ]; then
    runuser -u postgres -- "$@"
  else
    "$@"
  fi
}

# The Unix socket lives with the data unless the path is too long for one.
demo_socket_dir() {
  local d="$QUARV_DEMO_DIR/run"
  if [ ${#d} -gt 90 ]; then
    d="/tmp/quarv-demo-$(id -u)"
  fi
  echo "$d"
}

# psql as the cluster's superuser over the private socket.
demo_psql_admin() {
  psql -X -q -v ON_ERROR_STOP=1 -h "$(demo_socket_dir)" -p "$QUARV_DEMO_PORT" -U postgres "$@"
}

# psql as the program's role over TCP, exactly as the program connects.
demo_psql() {
  PGPASSWORD="$QUARV_DEMO_PASSWORD" psql -X -q -v ON_ERROR_STOP=1 -h 127.0.0.1 -p "$QUARV_DEMO_PORT" \
    -U "$QUARV_DEMO_USER" "$@"
}

demo_port_in_use() {
  (exec 3<>"/dev/tcp/127.0.0.1/$QUARV_DEMO_PORT") 2>/dev/null
}

# Creates the cluster on first use, starts it when it is not running, and
# makes sure the role quarv exists with its password.
demo_cluster_up() {
  local bin data sock
  bin=$(demo_pg_bindir)
  data="$QUARV_DEMO_DIR/data"
  sock=$(demo_socket_dir)
  command -v psql >/dev/null || demo_die "psql is missing; run scripts/setup"

  if [ "$(id -u)" -eq 0 ]; then
    id postgres >/dev/null 2>&1 || demo_die "the postgres account is missing; run scripts/setup"
    # Every folder above the data must be traversable by postgres.
    if ! runuser -u postgres -- test -x "$QUARV_ROOT"; then
      demo_die "the account postgres cannot enter $QUARV_ROOT; allow it (chmod o+x on $QUARV_ROOT and each parent folder) or move the checkout"
    fi
  fi

  mkdir -p "$QUARV_DEMO_DIR" "$sock"
  if [ "$(id -u)" -eq 0 ]; then
    chown postgres:postgres "$QUARV_DEMO_DIR" "$sock"
  fi

  if [ ! -f "$data/PG_VERSION" ]; then
    echo "demo: creating the PostgreSQL cluster in $QUARV_DEMO_DIR"
    demo_as_server "$bin/initdb" -D "$data" -U postgres -E UTF8 --locale=C.UTF-8 \
      --auth-local=trust --auth-host=scram-sha-256 >"$QUARV_DEMO_DIR/initdb.log" 2>&1 \
      || demo_die "initdb failed, see $QUARV_DEMO_DIR/initdb.log"
    cat >>"$data/postgresql.conf" <<EOF

# tkQuarv demo cluster
listen_addresses = '127.0.0.1'
port = $QUARV_DEMO_PORT
unix_socket_directories = '$sock'
password_encryption = 'scram-sha-256'
shared_buffers = 512MB
work_mem = 64MB
maintenance_work_mem = 512MB
max_wal_size = 4GB
synchronous_commit = off
jit = off
EOF
  fi

  if ! demo_as_server "$bin/pg_ctl" -D "$data" status >/dev/null 2>&1; then
    if demo_port_in_use; then
      demo_die "port $QUARV_DEMO_PORT on 127.0.0.1 is taken by another program; stop it and run again (the demo server always uses this port so that a saved connection profile keeps working)"
    fi
    echo "demo: starting PostgreSQL on 127.0.0.1:$QUARV_DEMO_PORT"
    demo_as_server "$bin/pg_ctl" -D "$data" -l "$QUARV_DEMO_DIR/server.log" -w -t 120 start >/dev/null \
      || demo_die "the server did not start, see $QUARV_DEMO_DIR/server.log"
  fi

  demo_psql_admin -d postgres <<EOF
set password_encryption = 'scram-sha-256';
select 'create role $QUARV_DEMO_USER login' where not exists (select 1 from pg_roles where rolname = '$QUARV_DEMO_USER')
\gexec
alter role $QUARV_DEMO_USER login password '$QUARV_DEMO_PASSWORD';
EOF
}

demo_db_exists() {
  [ "$(demo_psql_admin -d postgres -At -c "select 1 from pg_database where datname = '$1'")" = 1 ]
}

# A fingerprint of the demo sources and the scale, kept as the database's
# comment, so a database loaded from older sources is recognised.
demo_fingerprint() {
  echo "tkQuarv demo $(cat "$QUARV_ROOT/demo/schema.sql" "$QUARV_ROOT/demo/data.sql" | md5sum | cut -c1-32) scale $1"
}

demo_db_fingerprint() {
  demo_psql_admin -d postgres -At -c "select shobj_description(oid, 'pg_database') from pg_database where datname = '$1'"
}

demo_db_drop() {
  echo "demo: dropping $1"
  demo_psql_admin -d postgres -c "drop database $1 with (force)"
}

# Makes sure database $1 holds the schema and the data of scale $2, created
# and loaded only when it is not there yet. A database loaded from other
# demo sources is reloaded when $3 is "reload", else only reported.
demo_db_ensure() {
  local db=$1 scale=$2 stale=${3:-warn} want start
  want=$(demo_fingerprint "$scale")
  if demo_db_exists "$db" && [ "$(demo_db_fingerprint "$db")" != "$want" ]; then
    if [ "$stale" = reload ]; then
      echo "demo: $db was loaded from other demo sources; loading it afresh"
      demo_db_drop "$db"
    else
      echo "demo: note: $db was loaded from older demo sources; 'scripts/demo --reset' reloads it (saved grid styles are lost)" >&2
      return 0
    fi
  fi
  if ! demo_db_exists "$db"; then
    demo_psql_admin -d postgres -c "create database $db owner $QUARV_DEMO_USER encoding 'UTF8' template template0"
  fi
  if [ "$(demo_psql -d "$db" -At -c "select to_regclass('public.doc') is not null")" != t ]; then
    demo_psql -d "$db" -1 -f "$QUARV_ROOT/demo/schema.sql" || demo_die "loading demo/schema.sql into $db failed"
  fi
  if [ "$(demo_psql -d "$db" -At -c "select exists (select 1 from doc)")" != t ]; then
    echo "demo: generating the demo data of $db (scale $scale)"
    start=$(date +%s)
    demo_psql -d "$db" -f "$QUARV_ROOT/demo/data.sql" || demo_die "loading demo/data.sql into $db failed"
    demo_psql -d "$db" -At -c "select demo_generate($scale)" >/dev/null || demo_die "generating the data of $db failed"
    demo_psql_admin -d "$db" -c "vacuum analyze" || demo_die "analyze of $db failed"
    demo_psql -d "$db" -c "comment on database $db is '$want'"
    echo "demo: $db loaded in $(( $(date +%s) - start )) s"
  fi
}

# shellcheck shell=bash
# Ports of the loopback interface. Sourced, not run.

# free_port: prints one on which nobody listens, below those that the system hands out by itself.
free_port() {
    local port
    while :; do
        port=$((20000 + (RANDOM << 15 | RANDOM) % 12000))
        (: <>/dev/tcp/127.0.0.1/"$port") 2>/dev/null || break
    done
    echo "$port"
}

# put_in_place FILE TEXT: a reader sees the file complete or not at all.
put_in_place() {
    echo "$2" >"$1.new"
    mv "$1.new" "$1"
}

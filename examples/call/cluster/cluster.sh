#!/usr/bin/env bash
# A three-node RabbitMQ cluster on one machine, with its MQTT plugin, for
# calls that outgrow one broker (Debian's rabbitmq-server; its MQTT plugin
# ships with it):
#
#     examples/call/cluster/cluster.sh start DIR     # prints the MQTT addresses
#     examples/call/cluster/cluster.sh stop DIR [N]  # all nodes, or node N (1-3)
#
# Each node has its own name (doodleN@localhost, or NAMEN@localhost with
# DOODLE_CLUSTER_NAME=NAME, so that two clusters can run side by side), data under DIR/nodeN, and
# its own MQTT, AMQP and distribution ports on 127.0.0.1; the nodes share
# one Erlang cookie (DIR/.erlang.cookie) and find each other from a fixed
# list at first start. The ports come from DOODLE_MQTT_PORTS, DOODLE_AMQP_PORTS
# and DOODLE_DIST_PORTS (three each; defaults 1891-1893, 5691-5693,
# 25691-25693). MQTT is anonymous and on loopback only: for a first try and
# for tests, not for production.
set -euo pipefail

bin=/usr/lib/rabbitmq/bin
command=${1:?usage: cluster.sh start|stop DIR [N]}
dir=${2:?usage: cluster.sh start|stop DIR [N]}
read -r -a mqtt <<<"${DOODLE_MQTT_PORTS:-1891 1892 1893}"
read -r -a amqp <<<"${DOODLE_AMQP_PORTS:-5691 5692 5693}"
read -r -a dist <<<"${DOODLE_DIST_PORTS:-25691 25692 25693}"
name=${DOODLE_CLUSTER_NAME:-doodle}

mkdir -p "$dir"
dir=$(cd "$dir" && pwd)
export HOME=$dir # where every node and rabbitmqctl find the cookie

# node_env N: the environment of node N.
node_env() {
    local n=$1 i=$(($1 - 1))
    export RABBITMQ_NODENAME=$name$n@localhost
    export RABBITMQ_NODE_IP_ADDRESS=127.0.0.1
    export RABBITMQ_NODE_PORT=${amqp[$i]}
    export RABBITMQ_DIST_PORT=${dist[$i]}
    export RABBITMQ_CONFIG_FILE=$dir/node$n/rabbitmq.conf
    export RABBITMQ_ENABLED_PLUGINS_FILE=$dir/enabled_plugins
    export RABBITMQ_MNESIA_BASE=$dir/node$n/mnesia
    export RABBITMQ_LOG_BASE=$dir/node$n/log
    export RABBITMQ_PID_FILE=$dir/node$n/pid
}

write_config() {
    local n=$1
    mkdir -p "$dir/node$n"
    {
        echo "mqtt.listeners.tcp.default = 127.0.0.1:${mqtt[$((n - 1))]}"
        echo "mqtt.allow_anonymous = true"
        echo "cluster_formation.peer_discovery_backend = classic_config"
        for m in 1 2 3; do
            echo "cluster_formation.classic_config.nodes.$m = $name$m@localhost"
        done
    } >"$dir/node$n/rabbitmq.conf"
}

start() {
    if [ ! -f "$dir/.erlang.cookie" ]; then
        head -c 24 /dev/urandom | base64 | tr -d '/+=' >"$dir/.erlang.cookie"
        chmod 400 "$dir/.erlang.cookie"
    fi
    echo '[rabbitmq_mqtt].' >"$dir/enabled_plugins"
    for n in 1 2 3; do
        write_config "$n"
        (node_env "$n" && exec "$bin/rabbitmq-server" >"$dir/node$n/out.log" 2>&1) &
    done
    for n in 1 2 3; do
        (node_env "$n" && "$bin/rabbitmqctl" -n "$name$n@localhost" --timeout 120 \
            wait "$dir/node$n/pid" >/dev/null)
    done
    # One cluster: the first node lists all three.
    (node_env 1 && "$bin/rabbitmqctl" -n "${name}1@localhost" await_online_nodes 3 >/dev/null)
    echo "127.0.0.1:${mqtt[0]},127.0.0.1:${mqtt[1]},127.0.0.1:${mqtt[2]}"
}

stop_node() {
    local pid=""
    [ -f "$dir/node$1/pid" ] && pid=$(cat "$dir/node$1/pid")
    (node_env "$1" && timeout 60 "$bin/rabbitmqctl" -n "$name$1@localhost" stop \
        >/dev/null 2>&1) || true
    # Gone for good, even a node that did not answer.
    if [ -n "$pid" ]; then
        for _ in $(seq 50); do
            kill -0 "$pid" 2>/dev/null || break
            sleep 0.2
        done
        kill -9 "$pid" 2>/dev/null || true
    fi
    rm -f "$dir/node$1/pid"
}

case $command in
start) start ;;
stop)
    if [ -n "${3:-}" ]; then
        stop_node "$3"
    else
        for n in 3 2 1; do stop_node "$n"; done
        # The nodes' name server, once no node is left with it.
        if ! epmd -names 2>/dev/null | grep -q '^name '; then
            epmd -kill >/dev/null 2>&1 || true
        fi
    fi
    ;;
*)
    echo "usage: cluster.sh start|stop DIR [N]" >&2
    exit 2
    ;;
esac

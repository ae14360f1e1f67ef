#!/usr/bin/env bash
# Makes a throwaway certificate authority, a server certificate for
# localhost, 127.0.0.1 and ::1, a client certificate and a random password for
# each of alice, bob and mallory, the broker's password file, and a
# mosquitto.conf for a TLS listener on 127.0.0.1:PORT, all in DIR:
#
#     examples/call/secure/make-secrets.sh DIR [PORT]
#     mosquitto -c DIR/mosquitto.conf
#
# For tests and a first try only: the CA's key lies next to what it signed.
set -euo pipefail

dir=${1:?usage: make-secrets.sh DIR [PORT]}
port=${2:-8883}
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
users=(alice bob mallory)

mkdir -p "$dir"
# A broker started as root runs as the user mosquitto: it must reach the files.
chmod 711 "$dir"
dir=$(cd "$dir" && pwd)
cd "$dir"

# Elliptic-curve keys: made in milliseconds.
newkey=(-newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes)
openssl req -x509 "${newkey[@]}" -days 30 -subj "/CN=doodle throwaway CA" \
    -keyout ca.key -out ca.crt 2>/dev/null

# sign NAME SUBJECT EXTENSIONS: a key and a certificate signed by the CA.
sign() {
    openssl req -new "${newkey[@]}" -subj "$2" -keyout "$1.key" -out "$1.csr" 2>/dev/null
    printf '%b\n' "$3" >"$1.ext"
    openssl x509 -req -in "$1.csr" -CA ca.crt -CAkey ca.key -CAcreateserial -days 30 \
        -extfile "$1.ext" -out "$1.crt" 2>/dev/null
    rm -f "$1.csr" "$1.ext"
}
sign server "/CN=localhost" \
    "subjectAltName=DNS:localhost,IP:127.0.0.1,IP:::1\nextendedKeyUsage=serverAuth"

: >passwd
for user in "${users[@]}"; do
    sign "$user" "/CN=$user" "extendedKeyUsage=clientAuth"
    openssl rand -hex 16 >"$user.password"
    mosquitto_passwd -b passwd "$user" "$(cat "$user.password")"
done

cp "$here/acl" acl
sed -e "s|@DIR@|$dir|g" -e "s|@PORT@|$port|g" "$here/mosquitto.conf" >mosquitto.conf
# Secrets for their owner only; what the broker reads, readable by it too
# (a broker started as root runs as the user mosquitto).
chmod 600 ./*.key ./*.password
chmod 644 ca.crt server.crt passwd acl mosquitto.conf
chmod 640 server.key
if getent group mosquitto >/dev/null && [ "$(id -u)" -eq 0 ]; then
    chgrp mosquitto server.key
fi
echo "$dir/mosquitto.conf"

#!/usr/bin/env bash
# Installs, from Debian's archive, whatever the build, the program and the tests need and is still missing.
# Safe to run again: it only calls apt-get when a package is absent.
set -euo pipefail

PACOTES=(
  build-essential cmake ninja-build ccache pkg-config
  qt6-base-dev qt6-base-dev-tools qt6-translations-l10n libqt6sql6 libgl-dev qt6-charts-dev libqt6opengl6-dev
  firebird-dev libfbclient2 firebird3.0-server-core firebird3.0-utils firebird3.0-server
  libkainjow-mustache-dev libcurl4-openssl-dev libsodium-dev
  fonts-dejavu-core fonts-dseg breeze-icon-theme
  libgtest-dev libgmock-dev libbenchmark-dev
  xvfb xauth python3-aiosmtpd poppler-utils
)

faltando=()
for p in "${PACOTES[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || faltando+=("$p")
done
[ ${#faltando[@]} -eq 0 ] && exit 0

if [ "$(id -u)" -ne 0 ]; then
  echo "Faltam pacotes: ${faltando[*]}" >&2
  echo "Execute como root (ou instale-os com apt-get) e tente de novo." >&2
  exit 1
fi

export DEBIAN_FRONTEND=noninteractive
# The server package asks for a SYSDBA password; the tests start their own server with this one.
echo "firebird3.0-server shared/firebird/sysdba_password/first_install password masterkey" | debconf-set-selections
echo "firebird3.0-server shared/firebird/enabled boolean false" | debconf-set-selections || true
apt-get update -qq
apt-get install -y -qq --no-install-recommends "${faltando[@]}"

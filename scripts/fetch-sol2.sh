#!/usr/bin/env bash
# sol2 v3.3.0 is not packaged on its own in Debian 12, but Debian 13 ships its official single
# header, unmodified, inside the package satdump-data. This script downloads that one package
# through a private apt configuration that reuses the mirror this machine already uses, checks
# the version line and copies sol.hpp and config.hpp into .deps/sol2/sol (ignored by git).
set -euo pipefail

here="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
dest="$here/.deps/sol2/sol"
want="sol v3.3.0"

if [ -f "$dest/sol.hpp" ] && grep -q "generated with $want" "$dest/sol.hpp"; then
	exit 0
fi

# The Debian archive mirror the machine is configured with (deb822 or one-line format).
mirror=""
for f in /etc/apt/sources.list.d/*.sources /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
	[ -f "$f" ] || continue
	case "$f" in
	*.sources)
		mirror=$(awk 'tolower($1)=="uris:" {for (i=2;i<=NF;i++) if ($i ~ /\/debian\/?$/) {print $i; exit}}' "$f")
		;;
	*)
		mirror=$(awk '$1=="deb" {for (i=2;i<=NF;i++) if ($i ~ /^[a-z]+:\/\/.*\/debian\/?$/) {print $i; exit}}' "$f")
		;;
	esac
	[ -n "$mirror" ] && break
done
if [ -z "$mirror" ]; then
	echo "fetch-sol2: no Debian mirror found in the apt sources" >&2
	exit 1
fi

work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/etc/sources.list.d" "$work/etc/preferences.d" "$work/lists/partial" "$work/cache/archives/partial" "$work/dl"
touch "$work/etc/sources.list"
cat > "$work/etc/sources.list.d/trixie.sources" <<SRC
Types: deb
URIs: $mirror
Suites: trixie
Components: main
Signed-By: /usr/share/keyrings/debian-archive-keyring.gpg
SRC

apt_opts=(-o "Dir::Etc=$work/etc" -o "Dir::Etc::sourcelist=$work/etc/sources.list"
	-o "Dir::Etc::sourceparts=$work/etc/sources.list.d" -o "Dir::Etc::preferencesparts=$work/etc/preferences.d"
	-o "Dir::State::Lists=$work/lists" -o "Dir::Cache=$work/cache" -o "Dir::State::status=/dev/null"
	-o "Debug::NoLocking=1" -o "APT::Sandbox::User=root" -q)

apt-get "${apt_opts[@]}" update >/dev/null
(cd "$work/dl" && apt-get "${apt_opts[@]}" download satdump-data >/dev/null)

deb=$(ls "$work"/dl/satdump-data_*.deb)
dpkg-deb --fsys-tarfile "$deb" | tar -x -C "$work" ./usr/include/satdump/libs/sol2/sol.hpp ./usr/include/satdump/libs/sol2/config.hpp
src="$work/usr/include/satdump/libs/sol2"
if ! grep -q "generated with $want" "$src/sol.hpp"; then
	echo "fetch-sol2: the packaged sol2 header is not $want:" >&2
	grep -m1 "generated with" "$src/sol.hpp" >&2 || true
	exit 1
fi
mkdir -p "$dest"
cp "$src/sol.hpp" "$src/config.hpp" "$dest/"
echo "fetch-sol2: installed $want into $dest"

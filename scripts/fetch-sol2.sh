#!/usr/bin/env bash
# sol2 v3.3.0 is not packaged on its own in Debian 12, but Debian 13 ships its official single
# header, unmodified, inside the package satdump-data. This script downloads that one package
# through a private apt configuration that reuses the mirror this machine already uses, checks
# the version line, copies sol.hpp and config.hpp into .deps/sol2/sol (ignored by git) and makes
# the two changes to sol.hpp described at patch_sol2 and fix_argument_error below.
set -euo pipefail

here="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
dest="$here/.deps/sol2/sol"
want="sol v3.3.0"

# sol2 v3.3.0 declares noexcept a few routines that call into Lua where Lua may raise an error:
# making a registry reference (luaL_ref may have to grow the registry), making room on the stack
# (lua_checkstack may have to grow it) and formatting a type error (lua_pushfstring). Lua built as
# C++ raises its errors as C++ exceptions, and one that leaves a noexcept routine ends the program
# (std::terminate) instead of reaching the script, so running out of Lua memory in one of them (a
# table argument, a table a binding builds, an argument error) would take the editor down. These
# routines are made noexcept(false); the lines are those of v3.3.0, each checked before it is
# changed. Running this again changes nothing.
patch_sol2() {
	local file="$1" script="" line expect text
	while IFS='|' read -r line expect; do
		text=$(sed -n "${line}p" "$file")
		case "$text" in
		*"$expect"*noexcept*) ;;
		*)
			echo "fetch-sol2: line $line of $file is not '$expect'" >&2
			return 1
			;;
		esac
		case "$text" in
		*"noexcept(false)"*) ;;
		*) script+="${line}s/noexcept\\([^(]\\|\$\\)/noexcept(false)\\1/;" ;;
		esac
	done <<'LINES'
9551|inline int push_type_panic_string(lua_State* L, int index, type expected, type actual, string_view message, string_view aux_message)
9690|int push(lua_State* L_) const
9788|int push() const
9792|int push(lua_State* L_) const
10166|int copy_ref(lua_State* L_) const
10195|stateless_reference(lua_State* L_, global_tag_t)
10210|stateless_reference(const stack_reference& r)
10212|stateless_reference(stack_reference&& r)
10214|stateless_reference(lua_State* L_, const stateless_reference& r)
10239|stateless_reference(lua_State* L_, const stack_reference& r)
10255|stateless_reference(lua_State* L_, const stateless_stack_reference& r)
10258|stateless_reference(lua_State* L_, int index = -1)
10265|stateless_reference(lua_State* L_, absolute_index index_)
10267|stateless_reference(lua_State* L_, ref_index index_)
10289|int push(lua_State* L_) const
10312|void reset(lua_State* L_, int index_)
10347|stateless_reference copy(lua_State* L_) const
10354|void copy_assign(lua_State* L_, const stateless_reference& right)
10439|basic_reference(lua_State* L_, global_tag_t)
10442|basic_reference(lua_State* L_, global_tag_t, global_tag_t)
10445|basic_reference(lua_State* oL, const basic_reference<!main_only>& o)
10452|int copy_ref() const
10456|int copy_ref(lua_State* L_) const
10464|basic_reference(const stack_reference& r)
10466|basic_reference(stack_reference&& r)
10469|basic_reference(lua_State* L_, const basic_reference<r_main_only>& r)
10487|basic_reference(lua_State* L_, basic_reference<r_main_only>&& r)
10506|basic_reference(lua_State* L_, const stack_reference& r)
10521|basic_reference(lua_State* L_, int index = -1)
10529|basic_reference(lua_State* L_, ref_index index)
10542|basic_reference(const basic_reference& o)
10549|basic_reference(const basic_reference<!main_only>& o)
10564|basic_reference& operator=(const basic_reference& r)
10574|basic_reference& operator=(const basic_reference<!main_only>& r)
10590|int push() const
10599|int push(lua_State* L_) const
15173|static int push(lua_State* L, lua_nil_t)
15202|static int push(lua_State* L, lua_CFunction func, int n = 0)
15274|static int push(lua_State* L, void* userdata)
15285|static int push(lua_State* L, const void* userdata)
15296|static int push(lua_State* L, lightuserdata_value userdata)
15307|static int push(lua_State* L, light<T> l)
16826|basic_object(std::integral_constant<bool, invert_and_pop>, lua_State* L_, int index_ = -1)
16842|basic_object(detail::no_safety_tag, T&& r)
16846|basic_object(detail::no_safety_tag, lua_State* L_, T&& r)
16865|basic_object(const stack_reference& r)
16867|basic_object(stack_reference&& r)
16870|basic_object(const proxy_base<Super>& r)
16873|basic_object(proxy_base<Super>&& r)
16877|basic_object(lua_State* L_, int index_ = -1)
16879|basic_object(lua_State* L_, absolute_index index_)
16881|basic_object(lua_State* L_, raw_index index_)
16883|basic_object(lua_State* L_, ref_index index_)
16886|basic_object(lua_State* L_, in_place_type_t<T>, Args&&... args)
16890|basic_object(lua_State* L_, in_place_t, T&& arg, Args&&... args)
25775|basic_table_core(lua_State* L, global_tag_t t)
LINES
	if [ -n "$script" ]; then
		sed -i "$script" "$file"
	fi
}

# sol2 v3.3.0 formats an argument error whose check gave no message of its own (a string, number
# or boolean argument of the wrong type) with "...received %s: %s" but passes the empty message to
# that last %s, so the "(bad argument into '<signature>')" addendum is lost and the error ends in
# ": ". The addendum is passed there instead, as every other argument error carries it.
fix_argument_error() {
	local file="$1" line=9558
	local old='lua_pushfstring(L, err, index, type_name, actual_name.c_str(), message.data(), aux_message.data());'
	local new='lua_pushfstring(L, err, index, type_name, actual_name.c_str(), message.size() == 0 ? aux_message.data() : message.data(), aux_message.data());'
	local text
	text=$(sed -n "${line}p" "$file")
	case "$text" in
	*"$new"*) ;;
	*"$old"*) sed -i "${line}s/message\.data(), aux_message\.data());/message.size() == 0 ? aux_message.data() : message.data(), aux_message.data());/" "$file" ;;
	*)
		echo "fetch-sol2: line $line of $file is not the argument error's lua_pushfstring" >&2
		return 1
		;;
	esac
}

if [ -f "$dest/sol.hpp" ] && grep -q "generated with $want" "$dest/sol.hpp"; then
	patch_sol2 "$dest/sol.hpp"
	fix_argument_error "$dest/sol.hpp"
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
patch_sol2 "$src/sol.hpp"
fix_argument_error "$src/sol.hpp"
mkdir -p "$dest"
cp "$src/sol.hpp" "$src/config.hpp" "$dest/"
echo "fetch-sol2: installed $want into $dest"

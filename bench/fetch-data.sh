#!/usr/bin/env bash
# Puts the benchmark documents into bench/data/: real-world XML documents
# of different shapes taken from Debian packages, samples of the same kind
# for the vocabularies of the small ones (bench/data/vocabulary/), and one
# generated 100 MB document. Documents already there are kept, so a second
# run is quick.
#
#   bench/fetch-data.sh [--force] [--install] [--generator PATH]
#
#   --force      fetch and generate everything again
#   --install    install missing packages with apt-get (needs root or sudo)
#                instead of unpacking the files from the downloaded .deb
#   --generator  a built generate-document; otherwise it is compiled here
#
# A file comes from the system when its package is installed; otherwise
# the package is downloaded with apt-get and only that file is unpacked,
# which needs no root and leaves the system as it was (libgtk-3-dev alone
# would install some 80 packages). Each document is checked to be
# well-formed with xmllint. data/SOURCES.txt lists package versions,
# sizes and checksums.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
data="$here/data"
force=0
install=0
generator=""
while [ $# -gt 0 ]; do
	case "$1" in
		--force) force=1 ;;
		--install) install=1 ;;
		--generator) generator="$2"; shift ;;
		-h|--help) sed -n '2,20p' "$0" | sed 's/^# \{0,1\}//'; exit 0 ;;
		*) echo "fetch-data.sh: unknown argument $1" >&2; exit 2 ;;
	esac
	shift
done

SUDO=""
[ "$(id -u)" -eq 0 ] || SUDO="sudo"

# name in data/          package            file in the package                                                   shape
DOCUMENTS="
osinfo-debian11.xml      osinfo-db          /usr/share/osinfo/os/debian.org/debian-11.xml                         small-record
soap-envelope.xml        xmltooling-schemas /usr/share/xml/xmltooling/soap-envelope.xsd                           small,schema
soapbox-contacts.xml     ruby-soap4r        /usr/share/rubygems-integration/all/gems/soap4r-ruby1.9-2.0.5/sample/showcase/soap/soapbox/ContactsDataSet.xml small,schema-message
saml-metadata.xml        opensaml-schemas   /usr/share/xml/opensaml/saml-schema-metadata-2.0.xsd                  small,schema,namespaced
xkb-base.xml             xkb-data           /usr/share/X11/xkb/rules/base.xml                                     element-heavy
docbook-titlepage-fo.xml docbook-xsl        /usr/share/xml/docbook/stylesheet/docbook-xsl/fo/titlepage.templates.xsl XSLT,namespaced
cldr-ru.xml              unicode-cldr-core  /usr/share/unicode/cldr/common/main/ru.xml                            text-heavy,Cyrillic
mime-freedesktop.xml     shared-mime-info   /usr/share/mime/packages/freedesktop.org.xml                          namespaced,many-languages
gl-registry.xml          khronos-api        /usr/share/khronos-api/gl.xml                                         attribute-heavy,hex-values
gtk3-gir.xml             libgtk-3-dev       /usr/share/gir-1.0/Gtk-3.0.gir                                        namespaced,large-prose
mame-vgmplay.xml         mame-data          /usr/share/games/mame/hash/vgmplay.xml                                large,attributes,checksums
"
GENERATED=generated-100mb.xml

# Samples of the same kind as a small document, from which the benchmark
# builds the vocabulary that the document is written with: data/vocabulary/DOCUMENT/
# document         package            file in the package
VOCABULARY_SAMPLES="
soap-envelope      xmltooling-schemas /usr/share/xml/xmltooling/xenc-schema.xsd
soap-envelope      xmltooling-schemas /usr/share/xml/xmltooling/xmldsig-core-schema.xsd
saml-metadata      opensaml-schemas   /usr/share/xml/opensaml/saml-schema-assertion-2.0.xsd
saml-metadata      opensaml-schemas   /usr/share/xml/opensaml/saml-schema-protocol-2.0.xsd
osinfo-debian11    osinfo-db          /usr/share/osinfo/os/debian.org/debian-10.xml
osinfo-debian11    osinfo-db          /usr/share/osinfo/os/ubuntu.com/ubuntu-22.04.xml
soapbox-contacts   ruby-soap4r        /usr/share/rubygems-integration/all/gems/soap4r-ruby1.9-2.0.5/sample/showcase/soap/soapbox/ExceptionDataSet.xml
soapbox-contacts   ruby-soap4r        /usr/share/rubygems-integration/all/gems/soap4r-ruby1.9-2.0.5/sample/showcase/soap/soapbox/MessageDataSet.xml
"

mkdir -p "$data"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

need_tool() {
	# need_tool COMMAND PACKAGE
	command -v "$1" >/dev/null 2>&1 && return 0
	echo "fetch-data.sh: installing $2 for $1"
	$SUDO apt-get update -qq
	DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends "$2" >/dev/null
}

lists_updated=0
apt_lists() {
	# Package lists are missing on a fresh machine.
	if [ $lists_updated -eq 0 ] && ! apt-cache show "$1" >/dev/null 2>&1; then
		$SUDO apt-get update -qq
		lists_updated=1
	fi
}

installed() {
	[ "$(dpkg-query -W -f='${Status}' "$1" 2>/dev/null)" = "install ok installed" ]
}

check_well_formed() {
	if ! xmllint --noout --nonet --huge "$1" 2>"$work/xmllint.log"; then
		head -5 "$work/xmllint.log" >&2
		echo "fetch-data.sh: $1 is not well-formed" >&2
		rm -f "$1"
		exit 1
	fi
}

record_source() {
	# record_source NAME ORIGIN VERSION
	local file="$data/$1"
	grep -v "^$1 " "$data/SOURCES.txt" 2>/dev/null > "$work/sources" || true
	printf '%s %s %s %s %s\n' "$1" "$2" "$3" "$(stat -c %s "$file")" "$(sha256sum "$file" | cut -c1-16)" >> "$work/sources"
	sort "$work/sources" > "$data/SOURCES.txt"
}

need_tool xmllint libxml2-utils

fetch() {
	# fetch NAME PACKAGE PATH: the file PATH of PACKAGE as data/NAME
	local name=$1 package=$2 path=$3 target="$data/$1" version deb
	if [ $force -eq 0 ] && [ -s "$target" ]; then
		return 0
	fi
	mkdir -p "$(dirname "$target")"
	if ! installed "$package" && [ $install -eq 1 ]; then
		apt_lists "$package"
		DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends "$package" >/dev/null
	fi
	if installed "$package" && [ -f "$path" ]; then
		cp "$path" "$target.tmp"
		version=$(dpkg-query -W -f='${Version}' "$package")
	else
		apt_lists "$package"
		rm -f "$work"/*.deb
		(cd "$work" && apt-get download -qq -o APT::Sandbox::User=root "$package" 2>/dev/null) \
			|| (cd "$work" && apt-get download -qq "$package")
		deb=$(ls "$work"/*.deb)
		version=$(dpkg-deb -f "$deb" Version)
		dpkg-deb --fsys-tarfile "$deb" | tar -xO ".$path" > "$target.tmp"
		rm -f "$deb"
	fi
	mv "$target.tmp" "$target"
	check_well_formed "$target"
	record_source "$name" "$package" "$version"
	echo "fetch-data.sh: $name from $package $version, $(stat -c %s "$target") octets"
}

echo "$DOCUMENTS" | while read -r name package path shape; do
	[ -n "$name" ] || continue
	fetch "$name" "$package" "$path"
done

echo "$VOCABULARY_SAMPLES" | while read -r document package path; do
	[ -n "$document" ] || continue
	fetch "vocabulary/$document/$(basename "$path" | sed 's/\.[^.]*$//').xml" "$package" "$path"
done

target="$data/$GENERATED"
if [ $force -eq 1 ] || [ ! -s "$target" ]; then
	if [ -z "$generator" ]; then
		generator="$work/generate-document"
		c++ -std=c++17 -O2 -o "$generator" "$here/GenerateDocument.cpp" -lPocoFoundation
	fi
	"$generator" "$target.tmp" 100
	mv "$target.tmp" "$target"
	check_well_formed "$target"
	record_source "$GENERATED" generated "GenerateDocument.cpp@$(sha256sum "$here/GenerateDocument.cpp" | cut -c1-12)"
	echo "fetch-data.sh: $GENERATED generated, $(stat -c %s "$target") octets"
fi

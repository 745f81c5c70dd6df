//
// XMLTextRules.h
//
// Library: FastInfoset
// Module:  XMLTextRules
//
// What XML 1.0 text with namespaces allows, for the converter's output:
// characters, names and identifiers. Internal: this header is not installed.
//


#ifndef FastInfoset_XMLTextRules_INCLUDED
#define FastInfoset_XMLTextRules_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include <cstddef>
#include <string>


namespace Ixor {
namespace FastInfoset {


class XMLTextRules
	/// Checks strings against the productions of XML 1.0 (fifth edition)
	/// and of namespaces in XML. Strings are UTF-8; a string that is not
	/// valid UTF-8 passes none of the checks.
{
public:
	static const std::size_t ALL_VALID;
		/// What invalidCharacter() returns for a string without fault.

	static const std::string XML_NAMESPACE;
	static const std::string XMLNS_NAMESPACE;
		/// The two namespace names that namespaces in XML reserves.

	static std::size_t invalidCharacter(const char* text, std::size_t length);
		/// The offset of the first octet that does not start a character
		/// XML allows (an invalid or incomplete UTF-8 sequence, a control
		/// character other than tab, line feed and carriage return, U+FFFE,
		/// U+FFFF), or ALL_VALID.

	static bool isValidText(const std::string& text);
		/// True when invalidCharacter() finds nothing.

	static bool isName(const std::string& name);
		/// An XML name (colons allowed): processing-instruction targets,
		/// notation and entity names.

	static bool isNCName(const std::string& name);
		/// A name without colon: prefixes and local names.

	static bool isPublicId(const std::string& id);
		/// Only the characters a public identifier may hold.

	static bool isSystemId(const std::string& id);
		/// Valid text that fits between double quotes.

	static std::string shown(const std::string& text);
		/// The text in double quotes for a message, with octets outside
		/// printable ASCII as \xNN and long texts cut, so that a hostile
		/// string cannot disturb the line that reports it.

private:
	XMLTextRules() = delete;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_XMLTextRules_INCLUDED

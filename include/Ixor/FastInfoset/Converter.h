//
// Converter.h
//
// Library: FastInfoset
// Module:  Converter
//


#ifndef FastInfoset_Converter_INCLUDED
#define FastInfoset_Converter_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include <iosfwd>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API Converter
	/// Converts whole documents between XML text and Fast Infoset, with the
	/// host's XML parser and writer. The streams belong to the caller.
{
public:
	enum Options
	{
		STRIP_WHITESPACE = 0x01
			/// convertToFIS: drop ignorable whitespace (0x80 does the same).
	};

	static void convertToFIS(std::istream& xmlIn, std::ostream& fiOut, int options, int maxIndexedStringLength);
		/// Reads XML text and writes it as Fast Infoset with map tables.
		/// With options & 0x81 whitespace between elements is dropped.
		/// Strings of at most maxIndexedStringLength octets are indexed.
		/// Failures are the host parser's exceptions (for example
		/// Ixor::XML::SAXParseException) and those of FastInfosetWriter.

	static void convertToXML(std::istream& fiIn, std::ostream& xmlOut, int options);
		/// Reads Fast Infoset and prints XML text; options are the host
		/// XMLWriter's (Ixor::XML::XMLWriter::WRITE_XML_DECLARATION,
		/// PRETTY_PRINT, ...). Failures are those of FastInfosetParser.

private:
	Converter() = delete;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_Converter_INCLUDED

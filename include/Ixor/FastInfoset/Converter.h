//
// Converter.h
//
// Library: FastInfoset
// Module:  Converter
//


#ifndef FastInfoset_Converter_INCLUDED
#define FastInfoset_Converter_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include <iosfwd>


namespace Ixor {
namespace FastInfoset {


class FastInfosetParser;


class FastInfoset_API Converter
	/// Converts whole documents between XML text and Fast Infoset, with the
	/// host's XML parser and writer. The streams belong to the caller.
{
public:
	enum Options
	{
		STRIP_WHITESPACE = 0x01,
			/// convertToFIS: drop ignorable whitespace (0x80 does the same).
		END_WITH_NEWLINE = 0x100
			/// convertToXML: end the text with a line break, as text files
			/// do (pretty-printed text has one already). The host writer's
			/// option bits are all below it.
	};

	static void convertToFIS(std::istream& xmlIn, std::ostream& fiOut, int options = 0, int maxIndexedStringLength = FastInfosetWriter::DEFAULT_MAX_INDEXED_STRING_LENGTH);
		/// Reads XML text and writes it as Fast Infoset with map tables.
		/// With options & 0x81 whitespace between elements is dropped.
		/// Strings of at most maxIndexedStringLength octets are indexed.
		/// The character data between two tags goes out as one chunk, however
		/// the host parser cuts it.
		/// Failures are the host parser's exceptions (for example
		/// Ixor::XML::SAXParseException) and those of FastInfosetWriter.

	static void convertToFIS(std::istream& xmlIn, FastInfosetWriter& writer, int options = 0);
		/// As above, into a writer set up by the caller (its vocabulary,
		/// indexed length, XML declaration), which writes one document.

	static void convertToXML(std::istream& fiIn, std::ostream& xmlOut, int options);
		/// Reads one Fast Infoset document and prints it as well-formed XML
		/// text; options are the host XMLWriter's
		/// (Ixor::XML::XMLWriter::WRITE_XML_DECLARATION, PRETTY_PRINT, ...)
		/// and END_WITH_NEWLINE.
		///
		/// The document type declaration gets the root element's name, and
		/// notations and unparsed entities go into its internal subset;
		/// parts of it that XML cannot hold are left out. A document that
		/// XML text cannot hold (names that are not XML names, characters XML
		/// does not allow, a comment with "--", ...) fails with FISException
		/// "Cannot be written as well-formed XML" naming the fault; what
		/// was printed before the fault stays in xmlOut. Other failures are
		/// those of FastInfosetParser.

	static void convertToXML(FastInfosetParser& parser, std::istream& fiIn, std::ostream& xmlOut, int options);
		/// The same with a parser that the caller has set up (limits,
		/// external vocabularies, features). For the call its content, DTD,
		/// lexical and document handlers are the converter's; they are set
		/// back afterwards, also when the conversion fails.

private:
	Converter() = delete;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_Converter_INCLUDED

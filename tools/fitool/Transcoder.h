//
// Transcoder.h
//
// Tool: fitool
// Module: Transcoder
//


#ifndef Fitool_Transcoder_INCLUDED
#define Fitool_Transcoder_INCLUDED


#include "Ixor/FastInfoset/FastInfosetParser.h"
#include <cstddef>
#include <iosfwd>


namespace Fitool {


class Transcoder
	/// The two conversions of fitool, between streams.
{
public:
	struct EncodeOptions
	{
		bool stripWhitespace = false;
			/// Drop ignorable whitespace (the host's WhitespaceFilter).
		int maxIndexedLength = 16;
			/// Strings of at most this many octets enter the vocabulary.
		bool xmlDeclaration = false;
			/// Start the document with "<?xml encoding='finf'?>".
	};

	struct DecodeOptions
	{
		bool pretty = false;
			/// Indent the XML text.
		bool declaration = false;
			/// Start the XML text with an XML declaration.
		bool loadExternalVocabularies = false;
			/// Open the external vocabularies that documents name.
		Poco::UInt64 amplificationThreshold = Ixor::FastInfoset::FastInfosetParser::DEFAULT_AMPLIFICATION_THRESHOLD;
		double maxAmplification = Ixor::FastInfoset::FastInfosetParser::DEFAULT_MAX_AMPLIFICATION;
			/// The parser's limits on what a document delivers by index.
		bool multiple = false;
			/// Read a stream of documents, one after the other.
	};

	static void encode(std::istream& xml, std::ostream& fi, const EncodeOptions& options);
		/// Reads XML text and writes Fast Infoset with map tables. Throws
		/// the host parser's exceptions (Ixor::XML::SAXParseException for
		/// text that is not well-formed) and the writer's.

	static void decode(std::istream& fi, std::ostream& xml, const DecodeOptions& options);
		/// Reads one Fast Infoset document and prints it with
		/// Converter::convertToXML, ending with a line break. The stream is
		/// left after the document. Throws the exceptions of the converter
		/// and of FastInfosetParser.

	static void configure(Ixor::FastInfoset::FastInfosetParser& parser, const DecodeOptions& options);
		/// Gives the parser the options' external vocabulary choice and
		/// limits.

private:
	Transcoder() = delete;
};


} // namespace Fitool


#endif // Fitool_Transcoder_INCLUDED

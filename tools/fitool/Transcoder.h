//
// Transcoder.h
//
// Tool: fitool
// Module: Transcoder
//


#ifndef Fitool_Transcoder_INCLUDED
#define Fitool_Transcoder_INCLUDED


#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include <cstddef>
#include <iosfwd>
#include <memory>


namespace Fitool {


class Transcoder
	/// The two conversions of fitool, between streams.
{
public:
	struct EncodeOptions
	{
		bool stripWhitespace = false;
			/// Drop ignorable whitespace (the host's WhitespaceFilter).
		int maxIndexedLength = Ixor::FastInfoset::FastInfosetWriter::DEFAULT_MAX_INDEXED_STRING_LENGTH;
			/// Strings of at most this many octets enter the vocabulary.
		bool xmlDeclaration = false;
			/// Start the document with "<?xml encoding='finf'?>".
		const Ixor::FastInfoset::DocumentVocabulary* pVocabulary = 0;
			/// The external vocabulary that documents name, with map tables;
			/// the caller keeps it.
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
		const Ixor::FastInfoset::DocumentVocabulary* pVocabulary = 0;
			/// A vocabulary given to the parser in advance, with vector
			/// tables; the caller keeps it.
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

	static std::unique_ptr<Ixor::FastInfoset::FastInfosetParser> newParser(const DecodeOptions& options);
		/// A parser with vector tables, the options' vocabulary given in
		/// advance, their external vocabulary choice and limits.

private:
	Transcoder() = delete;
};


} // namespace Fitool


#endif // Fitool_Transcoder_INCLUDED

//
// Decoder.h
//
// Library: FastInfoset
// Module:  Decoder
//


#ifndef FastInfoset_Decoder_INCLUDED
#define FastInfoset_Decoder_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/QualifiedNameEntry.h"
#include <string>


namespace Ixor {
namespace FastInfoset {


class BitStreamReader;
class DocumentVocabulary;
class FISDocumentHandler;
class HeaderListener;
template <class T> class Vocabulary;


class FastInfoset_API Decoder
	/// The primitive decodings of the format: the document header and its
	/// initial vocabulary, the small integers, the lengths of octet strings
	/// and sequences, name surrogates and encoded character strings.
	///
	/// A position or value that the format does not allow (reserved integer
	/// forms, integers above 2^20, undefined alphabets, a value listed twice
	/// in an initial vocabulary table that finds values again) raises
	/// FISEncodingException; the end of the input raises FISParseException
	/// with a message that names the operation; header errors raise
	/// FISException.
{
public:
	struct OpenHeaderParts
		/// The optional components of the document that follow the header
		/// and are still to be read.
	{
		bool notations;
		bool unparsedEntities;
		bool characterEncodingScheme;
		bool standalone;
		bool version;
	};

	static void documentPreHeader(BitStreamReader& aReader, std::string& xmlDeclaration);
		/// Consumes the optional XML declaration (returned, or cleared when
		/// there is none), the identification, the version and the padding
		/// bit.

	static OpenHeaderParts documentHeader(BitStreamReader& aReader, DocumentVocabulary& vocabulary, FISDocumentHandler* pHandler, HeaderListener* pListener = 0);
		/// Consumes the seven presence bits and the additional data, and
		/// decodes the initial vocabulary into vocabulary or resets it.
		/// An external vocabulary that the document names is asked of
		/// pListener (the parser's), which also learns what was read;
		/// without one, only a vocabulary that already carries the URI
		/// serves, and any other URI raises FISException.

	static void skipAdditionalData(BitStreamReader& aReader);

	static void integer(BitStreamReader& aReader, unsigned int& val);
		/// Reads an integer that starts at p = 1, 2, 3, 4 or 6.

	static void nonEmptyOctetString(BitStreamReader& aReader, std::string& octets);
		/// Reads a length (at p = 1, 4 or 6) and that many octets.

	static void nonEmptyStringLength(BitStreamReader& aReader, unsigned long& strLen);
		/// Reads the length of a non-empty octet string at p = 1, 4 or 6.

	static void lengthOfSequence(BitStreamReader& aReader, unsigned int& length);
		/// Reads a sequence length at p = 0.

	static QualifiedNameEntry nameSurrogate(BitStreamReader& aReader);
		/// Reads a name surrogate at p = 6; an absent prefix or namespace
		/// index is 0xFFFFFFFF.

	static void encodedCharacterString(BitStreamReader& aReader, std::string& text, DocumentVocabulary& vocabulary);
		/// Reads an encoded character string of the initial vocabulary at
		/// p = 2 and returns its text.

	static void skipEncodingAlgos(BitStreamReader& aReader, DocumentVocabulary& vocabulary);
		/// Reads and drops the encoding-algorithm URIs of an initial
		/// vocabulary.

	static void parseInitialVocabulary(BitStreamReader& aReader, DocumentVocabulary& vocabulary, FISDocumentHandler* pHandler, HeaderListener* pListener = 0);
	static void handleExternalVocabulary(BitStreamReader& aReader, DocumentVocabulary& vocabulary, FISDocumentHandler* pHandler, HeaderListener* pListener = 0);
	static void handleRestrictedAlphabet(BitStreamReader& aReader, DocumentVocabulary& vocabulary);
	static void handleVocabulary(BitStreamReader& aReader, Vocabulary<std::string>* pTable);
	static void handleEncodedCharacterStringVoc(BitStreamReader& aReader, Vocabulary<std::string>* pTable, DocumentVocabulary& vocabulary);
	static void handleNameSurrogatesVoc(BitStreamReader& aReader, Vocabulary<QualifiedNameEntry>* pTable);

private:
	Decoder() = delete;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_Decoder_INCLUDED

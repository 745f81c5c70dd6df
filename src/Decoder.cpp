#include "Ixor/FastInfoset/Decoder.h"
#include "Ixor/FastInfoset/BitStreamReader.h"
#include "Ixor/FastInfoset/DocumentVocabulary.h"
#include "Ixor/FastInfoset/Encoder.h"
#include "Ixor/FastInfoset/Encoding.h"
#include "Ixor/FastInfoset/FISException.h"
#include "Ixor/FastInfoset/FISDocumentHandler.h"
#include "Ixor/FastInfoset/StringDecoder.h"
#include "FastDecoding.h"
#include "HeaderListener.h"
#include "PrimitiveForms.h"


namespace Ixor {
namespace FastInfoset {


namespace
{
	const char* const INVALID_HEADER = "Not a valid Fast Infoset document (invalid header)";
	const char* const END_OF_HEADER = "Unexpected end of stream while parsing document header";
	const char* const LISTED_TWICE = "Initial vocabulary lists a value twice in one table";
	const char* const TOO_LARGE = "Integer value larger than 2^20";


	template <class T>
	void addOnce(Vocabulary<T>& table, const T& value)
	{
		bool existed = false;
		table.index(value, existed);
		if (existed) throw FISEncodingException(LISTED_TWICE);
	}


	template <class ReadItem>
	void readSequence(BitStreamReader& reader, ReadItem readItem)
		/// A sequence length and that many items.
	{
		unsigned int count = 0;
		Decoder::lengthOfSequence(reader, count);
		for (unsigned int i = 0; i < count; ++i) readItem();
	}


	bool readField(BitStreamReader& reader, const PrimitiveForms::FormSet& forms, UInt64& value, bool& ok)
		/// Reads a number bit by bit, where one window cannot take it: a read
		/// past the end of the input reads 0 bits and clears ok, so that the
		/// caller can name the end once the number is decoded. Returns false,
		/// having read only the lead, when the lead names no form.
	{
		unsigned int lead = 0;
		ok = reader.read(lead, forms.leadBits) && ok;
		const PrimitiveForms::Form* pForm = PrimitiveForms::formOfLead(forms, lead);
		if (!pForm) return false;
		const int restBits = pForm->size - forms.leadBits;
		unsigned long rest = 0;
		if (restBits > 0) ok = reader.read(rest, restBits) && ok;
		value = PrimitiveForms::valueOf(*pForm, (UInt64(lead) << restBits) | rest);
		return true;
	}
}


void Decoder::documentPreHeader(BitStreamReader& aReader, std::string& xmlDeclaration)
{
	xmlDeclaration.clear();
	unsigned int bits = 0;
	aReader.read(bits, 16);
	if (bits == Encoder::XMLDECLARATION)
	{
		// The declaration is taken up to its closing ">" without looking at
		// its content; a document that ends before it has no valid header.
		xmlDeclaration = "<?";
		unsigned char octet = 0;
		do
		{
			if (!aReader.read(octet, 8)) throw FISException(INVALID_HEADER);
			xmlDeclaration += static_cast<char>(octet);
		}
		while (octet != '>');
		aReader.read(bits, 16);
	}
	if (bits != Encoder::DOCUMENTSTART) throw FISException(INVALID_HEADER);

	unsigned int version = 0;
	if (!aReader.read(version, 16)) throw FISException(INVALID_HEADER);
	if (version != 1) throw FISException("Unsupported Fast Infoset document version");
	aReader.skip(1);
}


Decoder::OpenHeaderParts Decoder::documentHeader(BitStreamReader& aReader, DocumentVocabulary& vocabulary, FISDocumentHandler* pHandler, HeaderListener* pListener)
{
	if (aReader.eof()) throw FISParseException(END_OF_HEADER);
	poco_assert(aReader.bitPos() == 1);

	unsigned int bits = 0;
	if (!aReader.read(bits, 7)) throw FISParseException(END_OF_HEADER);
	const bool additionalData    = (bits & 0x40) != 0;
	const bool initialVocabulary = (bits & 0x20) != 0;

	OpenHeaderParts parts;
	parts.notations               = (bits & 0x10) != 0;
	parts.unparsedEntities        = (bits & 0x08) != 0;
	parts.characterEncodingScheme = (bits & 0x04) != 0;
	parts.standalone              = (bits & 0x02) != 0;
	parts.version                 = (bits & 0x01) != 0;
	if (pListener) pListener->presenceRead(bits);

	if (additionalData)
	{
		skipAdditionalData(aReader);
		if (pListener) pListener->additionalDataRead();
	}
	if (initialVocabulary) parseInitialVocabulary(aReader, vocabulary, pHandler, pListener);
	else vocabulary.reset();
	return parts;
}


void Decoder::skipAdditionalData(BitStreamReader& aReader)
{
	std::string octets;
	readSequence(aReader, [&]
	{
		aReader.skip(1);
		nonEmptyOctetString(aReader, octets);
		aReader.skip(1);
		nonEmptyOctetString(aReader, octets);
	});
}


void Decoder::integer(BitStreamReader& aReader, unsigned int& val)
{
	int available = 0;
	int size = 0;
	const UInt64 window = aReader.window(available, 1);
	if (FastDecoding::integerAt(aReader.bitPos(), window, available, val, size))
	{
		aReader.advance(size);
		return;
	}

	// What the window does not hold whole, or what needs a diagnosis.
	const int pos = aReader.bitPos();
	const PrimitiveForms::FormSet* pForms = PrimitiveForms::integerFormsAt(pos);
	if (!pForms)
	{
		if (pos == 0) throw FISEncodingException("Illegal bit position 0: Integers can never start there");
		throw FISEncodingException("Illegal bit position: No Integers are allowed to be read from pos 5 or 7.");
	}
	UInt64 value = 0;
	bool ok = true;
	if (!readField(aReader, *pForms, value, ok)) throw FISEncodingException("Integer uses a reserved form");
	val = static_cast<unsigned int>(value);
	if (!ok) throw FISParseException("Unexpected end of stream while reading integer");
	if (value > Encoder::MAXINT20) throw FISEncodingException(TOO_LARGE);
}


void Decoder::nonEmptyOctetString(BitStreamReader& aReader, std::string& octets)
{
	unsigned long strLen = 0;
	nonEmptyStringLength(aReader, strLen);
	if (!aReader.read(octets, strLen))
		throw FISParseException("Unexpected end of stream while reading octet string");
}


void Decoder::nonEmptyStringLength(BitStreamReader& aReader, unsigned long& strLen)
{
	int available = 0;
	int size = 0;
	std::size_t length = 0;
	const UInt64 window = aReader.window(available, 1);
	if (FastDecoding::stringLengthAt(aReader.bitPos(), window, available, length, size))
	{
		aReader.advance(size);
		strLen = length;
		return;
	}

	const PrimitiveForms::FormSet* pForms = PrimitiveForms::stringLengthFormsAt(aReader.bitPos());
	if (!pForms) throw FISEncodingException("illegal position for nonEmptyOctetString encoding");
	UInt64 value = 0;
	bool ok = true;
	readField(aReader, *pForms, value, ok);
	strLen = static_cast<unsigned long>(value);
	if (!ok) throw FISParseException("Unexpected end of stream while parsing string length");
	poco_assert(aReader.bitPos() == 0);
}


void Decoder::lengthOfSequence(BitStreamReader& aReader, unsigned int& length)
{
	if (aReader.bitPos() != 0)
		throw FISEncodingException("Illegal startposition for a lengthOfSequence value");
	UInt64 value = 0;
	bool ok = true;
	readField(aReader, PrimitiveForms::SEQUENCE_LENGTH, value, ok);
	length = static_cast<unsigned int>(value);
	if (!ok) throw FISParseException("Unexpected end of stream while parsing sequence length");
}


QualifiedNameEntry Decoder::nameSurrogate(BitStreamReader& aReader)
{
	bool prefixPresent = false;
	bool namespacePresent = false;
	FastDecoding::twoFlagsAt(aReader, 6, "Illegal startposition for a nameSurrogate value", prefixPresent, namespacePresent, "Unexpected end of stream while reading surrogate");

	unsigned int prefixId = 0xFFFFFFFF;
	unsigned int namespaceId = 0xFFFFFFFF;
	unsigned int localNameId = 0xFFFFFFFF;
	if (prefixPresent)
	{
		aReader.skip(1);
		integer(aReader, prefixId);
	}
	if (namespacePresent)
	{
		aReader.skip(1);
		integer(aReader, namespaceId);
	}
	aReader.skip(1);
	integer(aReader, localNameId);
	return QualifiedNameEntry(prefixId, namespaceId, localNameId);
}


void Decoder::encodedCharacterString(BitStreamReader& aReader, std::string& text, DocumentVocabulary& vocabulary)
{
	unsigned char enc = 0;
	if (!aReader.read(enc, 2)) throw FISParseException("Unexpected end of stream while parsing encoded character string");
	unsigned int index = 0;
	if (enc == DocumentVocabulary::RESTRICTEDALPHABET || enc == DocumentVocabulary::ENCODINGALGORITHM)
	{
		// An extra 8-bit integer comes first for these two; it is read and
		// dropped, as documents of this format carry it.
		integer(aReader, index);
	}
	std::string octets;
	switch (enc)
	{
	case DocumentVocabulary::UTF8:
		nonEmptyOctetString(aReader, text);
		break;
	case DocumentVocabulary::UTF16:
		nonEmptyOctetString(aReader, octets);
		StringDecoder::decodeUTF16(octets, text);
		break;
	case DocumentVocabulary::RESTRICTEDALPHABET:
		{
			integer(aReader, index);
			const RestrictedAlphabet& alphabet = FastDecoding::alphabetAt(vocabulary.restrictedAlphabets(), index);
			nonEmptyOctetString(aReader, octets);
			StringDecoder::decodeAlphabet(octets, alphabet, text);
		}
		break;
	default:
		{
			poco_assert(enc == DocumentVocabulary::ENCODINGALGORITHM);
			integer(aReader, index);
			Ixor::AutoPtr<Encoding> pEncoding = vocabulary.decodings().read(static_cast<int>(index), aReader);
			poco_check_ptr(pEncoding.get());
			text = pEncoding->content();
		}
		break;
	}
}


void Decoder::skipEncodingAlgos(BitStreamReader& aReader, DocumentVocabulary& /*vocabulary*/)
{
	// Algorithms named by URI cannot be registered: their URIs are dropped.
	std::string uri;
	readSequence(aReader, [&]
	{
		aReader.skip(1);
		nonEmptyOctetString(aReader, uri);
	});
}


void Decoder::parseInitialVocabulary(BitStreamReader& aReader, DocumentVocabulary& vocabulary, FISDocumentHandler* pHandler, HeaderListener* pListener)
{
	if (pListener) pListener->initialVocabularyStarts();
	aReader.skip(3);
	unsigned int flags = 0;
	if (!aReader.read(flags, 13)) throw FISParseException("Unexpected end of stream while parsing initial vocabulary");
	if (flags == 0) throw FISException("Initial Vocabulary detected with zero information in it - at least one dictionary required");

	if (flags & 0x1000) handleExternalVocabulary(aReader, vocabulary, pHandler, pListener);
	else vocabulary.reset();

	// The lists in stream order, each with its flag. Content character
	// chunks come before other strings, although their table identifiers
	// are the other way round.
	static const DocumentVocabulary::ID LISTS[] =
	{
		DocumentVocabulary::RESTRICTED_ALPHABET, DocumentVocabulary::ENCODING_ALGORITHM, DocumentVocabulary::PREFIX,
		DocumentVocabulary::NAMESPACE_NAME, DocumentVocabulary::LOCAL_NAME, DocumentVocabulary::OTHER_NCNAME,
		DocumentVocabulary::OTHER_URI, DocumentVocabulary::ATTRIBUTE_VALUE, DocumentVocabulary::CONTENT_CHARACTER_CHUNK,
		DocumentVocabulary::OTHER_STRING, DocumentVocabulary::ELEMENT_NAME, DocumentVocabulary::ATTRIBUTE_NAME
	};
	unsigned int flag = 0x0800;
	for (DocumentVocabulary::ID id: LISTS)
	{
		const bool present = (flags & flag) != 0;
		flag >>= 1;
		if (!present) continue;
		std::size_t first = 0;
		switch (id)
		{
		case DocumentVocabulary::RESTRICTED_ALPHABET:
			first = vocabulary.restrictedAlphabets().alphabets().size();
			handleRestrictedAlphabet(aReader, vocabulary);
			break;
		case DocumentVocabulary::ENCODING_ALGORITHM:
			skipEncodingAlgos(aReader, vocabulary);
			break;
		case DocumentVocabulary::ELEMENT_NAME:
		case DocumentVocabulary::ATTRIBUTE_NAME:
		{
			Vocabulary<QualifiedNameEntry>* pTable = id == DocumentVocabulary::ELEMENT_NAME ? vocabulary.elementVocabulary() : vocabulary.attributeVocabulary();
			first = pTable->size();
			handleNameSurrogatesVoc(aReader, pTable);
			break;
		}
		case DocumentVocabulary::ATTRIBUTE_VALUE:
		case DocumentVocabulary::CONTENT_CHARACTER_CHUNK:
		case DocumentVocabulary::OTHER_STRING:
			first = vocabulary.vocabulary(id)->size();
			handleEncodedCharacterStringVoc(aReader, vocabulary.vocabulary(id), vocabulary);
			break;
		default:
			first = vocabulary.vocabulary(id)->size();
			handleVocabulary(aReader, vocabulary.vocabulary(id));
			break;
		}
		if (pListener) pListener->listRead(id, first);
	}
}


void Decoder::handleExternalVocabulary(BitStreamReader& aReader, DocumentVocabulary& vocabulary, FISDocumentHandler* pHandler, HeaderListener* pListener)
{
	aReader.skip(1);
	std::string uri;
	nonEmptyOctetString(aReader, uri);
	if (pListener)
	{
		pListener->externalVocabularyNamed(uri);
		// A handler without which the document can still be read learns of
		// what was loaded, not of a vocabulary given in advance.
		if (pListener->loadExternalVocabulary(uri, vocabulary) && pHandler) pHandler->setExternalVocabulary(uri, vocabulary);
		return;
	}
	// The vocabulary that already carries this URI is kept as it is.
	if (uri != vocabulary.getURI()) throw FISException(HeaderListener::LOADING_DISABLED, uri);
}


void Decoder::handleRestrictedAlphabet(BitStreamReader& aReader, DocumentVocabulary& vocabulary)
{
	std::string characters;
	readSequence(aReader, [&]
	{
		aReader.skip(1);
		nonEmptyOctetString(aReader, characters);
		vocabulary.restrictedAlphabets().add(characters);
	});
}


void Decoder::handleVocabulary(BitStreamReader& aReader, Vocabulary<std::string>* pTable)
{
	std::string value;
	readSequence(aReader, [&]
	{
		aReader.skip(1);
		nonEmptyOctetString(aReader, value);
		addOnce(*pTable, value);
	});
}


void Decoder::handleEncodedCharacterStringVoc(BitStreamReader& aReader, Vocabulary<std::string>* pTable, DocumentVocabulary& vocabulary)
{
	std::string value;
	readSequence(aReader, [&]
	{
		aReader.skip(2);
		encodedCharacterString(aReader, value, vocabulary);
		addOnce(*pTable, value);
	});
}


void Decoder::handleNameSurrogatesVoc(BitStreamReader& aReader, Vocabulary<QualifiedNameEntry>* pTable)
{
	readSequence(aReader, [&]
	{
		aReader.skip(6);
		// Absent prefix and namespace indexes (0xFFFFFFFF) are kept as they are.
		addOnce(*pTable, nameSurrogate(aReader));
	});
}


} } // namespace Ixor::FastInfoset

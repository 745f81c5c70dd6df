#include "Ixor/FastInfoset/Decoder.h"
#include "Ixor/FastInfoset/BitStreamReader.h"
#include "Ixor/FastInfoset/DocumentVocabulary.h"
#include "Ixor/FastInfoset/Encoder.h"
#include "Ixor/FastInfoset/Encoding.h"
#include "Ixor/FastInfoset/FISException.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include "Ixor/FastInfoset/FISDocumentHandler.h"
#include "Ixor/FastInfoset/StringDecoder.h"
#include "FastDecoding.h"
#include "Poco/NullStream.h"
#include "Poco/Path.h"
#include "Poco/SAX/InputSource.h"
#include "Poco/SAX/SAXParser.h"
#include "Poco/URI.h"
#include "Poco/URIStreamOpener.h"
#include <istream>
#include <memory>


namespace Ixor {
namespace FastInfoset {


namespace
{
	const int MAX_EXTERNAL_VOCABULARY_NESTING = 8;
	thread_local bool externalLoadingAllowed = true;

	DocumentVocabulary withVectorTables(const DocumentVocabulary& source)
	{
		DocumentVocabulary result(DocumentVocabulary::VOC_VECTOR);
		bool found = false;
		for (int id = DocumentVocabulary::PREFIX; id <= DocumentVocabulary::CONTENT_CHARACTER_CHUNK; ++id)
		{
			const DocumentVocabulary::ID table = static_cast<DocumentVocabulary::ID>(id);
			const std::size_t size = source.vocabulary(table)->size();
			for (std::size_t i = result.vocabulary(table)->size(); i < size; ++i)
			{
				result.index(table, source.value(table, static_cast<unsigned int>(i)), found);
			}
		}
		for (std::size_t i = 1; i < source.elementVocabulary()->size(); ++i)
		{
			result.elementVocabulary()->index(source.elementVocabulary()->value(static_cast<unsigned int>(i)), found);
		}
		for (std::size_t i = 1; i < source.attributeVocabulary()->size(); ++i)
		{
			result.attributeVocabulary()->index(source.attributeVocabulary()->value(static_cast<unsigned int>(i)), found);
		}
		result.restrictedAlphabets() = source.restrictedAlphabets();
		return result;
	}
	const char* const INVALID_HEADER = "Not a valid Fast Infoset document (invalid header)";
	const char* const END_OF_HEADER = "Unexpected end of stream while parsing document header";
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


Decoder::OpenHeaderParts Decoder::documentHeader(BitStreamReader& aReader, DocumentVocabulary& vocabulary, FISDocumentHandler* pHandler)
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

	if (additionalData) skipAdditionalData(aReader);
	if (initialVocabulary) parseInitialVocabulary(aReader, vocabulary, pHandler);
	else vocabulary.reset();
	return parts;
}


void Decoder::skipAdditionalData(BitStreamReader& aReader)
{
	unsigned int count = 0;
	lengthOfSequence(aReader, count);
	std::string octets;
	for (unsigned int i = 0; i < count; ++i)
	{
		aReader.skip(1);
		nonEmptyOctetString(aReader, octets);
		aReader.skip(1);
		nonEmptyOctetString(aReader, octets);
	}
}


void Decoder::integer(BitStreamReader& aReader, unsigned int& val)
{
	// Whole fields in one step; what is cut short or needs a diagnosis takes
	// the bit-by-bit path below.
	int available = 0;
	int size = 0;
	const UInt64 window = aReader.window(available);
	if (FastDecoding::integerAt(aReader.bitPos(), window, available, val, size))
	{
		aReader.advance(size);
		return;
	}

	// On a failed read the bits read as 0; the end of the input is reported
	// once the value is decoded.
	unsigned int next = 0;
	bool ok = true;
	unsigned int result = 0;
	val = 0;
	switch (aReader.bitPos())
	{
	case 0:
		throw FISEncodingException("Illegal bit position 0: Integers can never start there");
	case 1:
		ok = aReader.read(val, 7);
		if (val == 127) result = 0;
		else if (val < 64) result = val + 1;
		else if (val < 96)
		{
			ok = aReader.read(next, 8) && ok;
			result = ((val % 32) << 8) + next + 65;
		}
		else
		{
			// '111xxxx' other than 127 is read as the '110' form.
			ok = aReader.read(next, 16) && ok;
			result = ((val % 16) << 16) + next + 8257;
		}
		break;
	case 2:
		ok = aReader.read(val, 6);
		if (val < 32) result = val + 1;
		else if (val < 40)
		{
			ok = aReader.read(next, 8) && ok;
			result = ((val % 8) << 8) + next + 33;
		}
		else if (val < 48)
		{
			ok = aReader.read(next, 16) && ok;
			result = ((val % 8) << 16) + next + 2081;
		}
		else
		{
			poco_assert(val == 48);
			aReader.skip(4);
			ok = aReader.read(next, 20) && ok;
			result = next + 526369;
		}
		break;
	case 3:
		ok = aReader.read(val, 5);
		if (val < 16) result = val + 1;
		else if (val < 20)
		{
			ok = aReader.read(next, 8) && ok;
			result = ((val % 4) << 8) + next + 17;
		}
		else if (val < 24)
		{
			ok = aReader.read(next, 16) && ok;
			result = ((val % 4) << 16) + next + 1041;
		}
		else
		{
			// Any value from 24 up is the long form; the following bits are
			// not checked.
			aReader.skip(4);
			ok = aReader.read(next, 20) && ok;
			result = next + 263185;
		}
		break;
	case 4:
	case 6:
		ok = aReader.read(val, 8);
		val += 1;
		if (!ok) throw FISParseException("Unexpected end of stream while reading integer");
		return;
	default:
		throw FISEncodingException("Illegal bit position: No Integers are allowed to be read from pos 5 or 7.");
	}
	val = result;
	if (!ok) throw FISParseException("Unexpected end of stream while reading integer");
	poco_assert(val <= Encoder::MAXINT20);
	poco_assert(aReader.bitPos() == 0);
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
	const UInt64 window = aReader.window(available);
	if (FastDecoding::stringLengthAt(aReader.bitPos(), window, available, length, size))
	{
		aReader.advance(size);
		strLen = length;
		return;
	}

	unsigned int bits = 0;
	unsigned int next = 0;
	bool ok = true;
	strLen = 0;
	switch (aReader.bitPos())
	{
	case 1:
		ok = aReader.read(bits, 7);
		if (bits < 64) strLen = bits + 1;
		else if (bits == 64)
		{
			ok = aReader.read(next, 8) && ok;
			strLen = next + 65ul;
		}
		else
		{
			ok = aReader.read(next, 32) && ok;
			strLen = next + 321ul;
		}
		break;
	case 4:
		ok = aReader.read(bits, 4);
		if (bits < 8) strLen = bits + 1;
		else if (bits == 8)
		{
			ok = aReader.read(next, 8) && ok;
			strLen = next + 9ul;
		}
		else
		{
			ok = aReader.read(next, 32) && ok;
			strLen = next + 265ul;
		}
		break;
	case 6:
		ok = aReader.read(bits, 2);
		if (bits < 2) strLen = bits + 1;
		else if (bits == 2)
		{
			ok = aReader.read(next, 8) && ok;
			strLen = next + 3ul;
		}
		else
		{
			ok = aReader.read(next, 32) && ok;
			strLen = next + 259ul;
		}
		break;
	default:
		throw FISEncodingException("illegal position for nonEmptyOctetString encoding");
	}
	if (!ok) throw FISParseException("Unexpected end of stream while parsing string length");
	poco_assert(aReader.bitPos() == 0);
	poco_assert(strLen > 0);
}


void Decoder::lengthOfSequence(BitStreamReader& aReader, unsigned int& length)
{
	if (aReader.bitPos() != 0)
		throw FISEncodingException("Illegal startposition for a lengthOfSequence value");
	unsigned char first = 0;
	unsigned int bits = 0;
	bool ok = aReader.peek(first, 1);
	if (first == 0)
	{
		ok = aReader.read(bits, 8) && ok;
		length = bits + 1;
	}
	else
	{
		// The three bits after the leading 1 are not looked at.
		ok = aReader.read(bits, 24) && ok;
		length = (bits % 0x100000) + 129;
	}
	if (!ok) throw FISParseException("Unexpected end of stream while parsing sequence length");
	if (length == 0) throw FISEncodingException("Illegal value zero for lengthOfSequence");
}


QualifiedNameEntry Decoder::nameSurrogate(BitStreamReader& aReader)
{
	if (aReader.bitPos() != 6)
		throw FISEncodingException("Illegal startposition for a nameSurrogate value");
	bool prefixPresent = false;
	bool namespacePresent = false;
	bool ok = aReader.read(prefixPresent);
	ok = aReader.read(namespacePresent) && ok;
	if (!ok) throw FISParseException("Unexpected end of stream while reading surrogate");

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
		integer(aReader, index);
		nonEmptyOctetString(aReader, octets);
		StringDecoder::decodeAlphabet(octets, vocabulary.restrictedAlphabets().alphabet(index), text);
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
	unsigned int count = 0;
	lengthOfSequence(aReader, count);
	std::string uri;
	for (unsigned int i = 0; i < count; ++i)
	{
		aReader.skip(1);
		nonEmptyOctetString(aReader, uri);
	}
}


void Decoder::parseInitialVocabulary(BitStreamReader& aReader, DocumentVocabulary& vocabulary, FISDocumentHandler* pHandler)
{
	aReader.skip(3);
	unsigned int flags = 0;
	if (!aReader.read(flags, 13)) throw FISParseException("Unexpected end of stream while parsing initial vocabulary");
	if (flags == 0) throw FISException("Initial Vocabulary detected with zero information in it - at least one dictionary required");

	if (flags & 0x1000) handleExternalVocabulary(aReader, vocabulary, pHandler);
	else vocabulary.reset();

	if (flags & 0x0800) handleRestrictedAlphabet(aReader, vocabulary);
	if (flags & 0x0400) skipEncodingAlgos(aReader, vocabulary);
	if (flags & 0x0200) handleVocabulary(aReader, vocabulary.vocabulary(DocumentVocabulary::PREFIX));
	if (flags & 0x0100) handleVocabulary(aReader, vocabulary.vocabulary(DocumentVocabulary::NAMESPACE_NAME));
	if (flags & 0x0080) handleVocabulary(aReader, vocabulary.vocabulary(DocumentVocabulary::LOCAL_NAME));
	if (flags & 0x0040) handleVocabulary(aReader, vocabulary.vocabulary(DocumentVocabulary::OTHER_NCNAME));
	if (flags & 0x0020) handleVocabulary(aReader, vocabulary.vocabulary(DocumentVocabulary::OTHER_URI));
	// The stream carries content character chunks before other strings,
	// although their table identifiers are the other way round.
	if (flags & 0x0010) handleEncodedCharacterStringVoc(aReader, vocabulary.vocabulary(DocumentVocabulary::ATTRIBUTE_VALUE), vocabulary);
	if (flags & 0x0008) handleEncodedCharacterStringVoc(aReader, vocabulary.vocabulary(DocumentVocabulary::CONTENT_CHARACTER_CHUNK), vocabulary);
	if (flags & 0x0004) handleEncodedCharacterStringVoc(aReader, vocabulary.vocabulary(DocumentVocabulary::OTHER_STRING), vocabulary);
	if (flags & 0x0002) handleNameSurrogatesVoc(aReader, vocabulary.elementVocabulary());
	if (flags & 0x0001) handleNameSurrogatesVoc(aReader, vocabulary.attributeVocabulary());
}


void Decoder::handleExternalVocabulary(BitStreamReader& aReader, DocumentVocabulary& vocabulary, FISDocumentHandler* pHandler)
{
	aReader.skip(1);
	std::string uri;
	nonEmptyOctetString(aReader, uri);
	// The vocabulary that already carries this URI is kept as it is: that is
	// how an application supplies an external vocabulary in advance.
	if (uri == vocabulary.getURI()) return;

	if (!ExternalLoading::allowed())
		throw FISException("External vocabulary loading is disabled", uri);

	// A vocabulary document may name an external vocabulary itself; one that
	// names itself, directly or through others, must not recurse forever.
	static thread_local int nesting = 0;
	if (nesting >= MAX_EXTERNAL_VOCABULARY_NESTING)
		throw FISException("External vocabularies nested too deeply", uri);
	struct NestingGuard
	{
		NestingGuard() { ++nesting; }
		~NestingGuard() { --nesting; }
	} guard;

	std::unique_ptr<std::istream> pStream(Ixor::URIStreamOpener::defaultOpener().open(uri));
	std::string path = Ixor::URI(uri).getPath();
	path = Ixor::toLower(path);
	Ixor::XML::InputSource source(*pStream);
	if (Ixor::Path(path).getExtension() == "xml")
	{
		Ixor::NullOutputStream nowhere;
		FastInfosetWriter writer(nowhere, false, DocumentVocabulary::VOC_MAP);
		Ixor::XML::SAXParser parser;
		parser.setFeature(Ixor::XML::XMLReader::FEATURE_NAMESPACES, true);
		parser.setFeature(Ixor::XML::XMLReader::FEATURE_NAMESPACE_PREFIXES, true);
		parser.setContentHandler(&writer);
		parser.setDTDHandler(&writer);
		parser.setProperty(Ixor::XML::XMLReader::PROPERTY_LEXICAL_HANDLER, static_cast<Ixor::XML::LexicalHandler*>(&writer));
		parser.parse(&source);
		// The writer's tables are hash tables of fixed capacity that find old
		// values again; the reader needs tables that give every literal of a
		// document its own index and take any number of them. Entries are
		// copied in index order, so they keep their indexes.
		vocabulary = withVectorTables(writer.getDocumentVocabulary());
	}
	else
	{
		FastInfosetParser parser(DocumentVocabulary::VOC_VECTOR);
		parser.parse(&source);
		vocabulary = parser.vocabulary();
	}
	// A parser without document handler still reads the document.
	if (pHandler) pHandler->setExternalVocabulary(uri, vocabulary);
}


void Decoder::handleRestrictedAlphabet(BitStreamReader& aReader, DocumentVocabulary& vocabulary)
{
	unsigned int count = 0;
	lengthOfSequence(aReader, count);
	std::string characters;
	for (unsigned int i = 0; i < count; ++i)
	{
		aReader.skip(1);
		nonEmptyOctetString(aReader, characters);
		vocabulary.restrictedAlphabets().add(characters);
	}
}


void Decoder::handleVocabulary(BitStreamReader& aReader, Vocabulary<std::string>* pTable)
{
	unsigned int count = 0;
	lengthOfSequence(aReader, count);
	std::string value;
	bool existed = false;
	for (unsigned int i = 0; i < count; ++i)
	{
		aReader.skip(1);
		nonEmptyOctetString(aReader, value);
		pTable->index(value, existed);
		poco_assert(!existed);
	}
}


void Decoder::handleEncodedCharacterStringVoc(BitStreamReader& aReader, Vocabulary<std::string>* pTable, DocumentVocabulary& vocabulary)
{
	unsigned int count = 0;
	lengthOfSequence(aReader, count);
	std::string value;
	bool existed = false;
	for (unsigned int i = 0; i < count; ++i)
	{
		aReader.skip(2);
		encodedCharacterString(aReader, value, vocabulary);
		pTable->index(value, existed);
		poco_assert(!existed);
	}
}


void Decoder::handleNameSurrogatesVoc(BitStreamReader& aReader, Vocabulary<QualifiedNameEntry>* pTable)
{
	unsigned int count = 0;
	lengthOfSequence(aReader, count);
	bool existed = false;
	for (unsigned int i = 0; i < count; ++i)
	{
		aReader.skip(6);
		// Absent prefix and namespace indexes (0xFFFFFFFF) are kept as they are.
		pTable->index(nameSurrogate(aReader), existed);
		poco_assert(!existed);
	}
}


Decoder::ExternalLoading::ExternalLoading(bool allowed):
	_previous(externalLoadingAllowed)
{
	externalLoadingAllowed = allowed;
}


Decoder::ExternalLoading::~ExternalLoading()
{
	externalLoadingAllowed = _previous;
}


bool Decoder::ExternalLoading::allowed()
{
	return externalLoadingAllowed;
}


} } // namespace Ixor::FastInfoset

#include "DocumentDumper.h"
#include "TextFormat.h"
#include "Ixor/FastInfoset/BitStreamReader.h"
#include "Ixor/FastInfoset/DecodingAlgorithm.h"
#include "Ixor/FastInfoset/Encoding.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Ixor/FastInfoset/FISException.h"
#include "Ixor/FastInfoset/QualifiedNameEntry.h"
#include "Ixor/FastInfoset/StringDecoder.h"
#include "Ixor/FastInfoset/Vocabulary.h"
#include "Poco/NumberFormatter.h"
#include <algorithm>
#include <utility>
#include <ostream>
#include <vector>


using Ixor::FastInfoset::Decoder;
using Ixor::FastInfoset::DocumentVocabulary;
using Ixor::FastInfoset::FISEncodingException;
using Ixor::FastInfoset::FISException;
using Ixor::FastInfoset::FISParseException;
using Ixor::FastInfoset::QualifiedNameEntry;
using Ixor::FastInfoset::StringDecoder;
using Ixor::FastInfoset::Vocabulary;
using Poco::NumberFormatter;


namespace Fitool {


namespace
{
	// The parser's messages, so that the listing fails the way a parse does.
	const char* const END_OF_HEADER = "Unexpected end of stream while parsing document header";
	const char* const END_OF_CHILDREN = "Unexpected end of stream while parsing element children";
	const char* const END_OF_ELEMENT = "Unexpected end of stream while parsing element";
	const char* const BAD_CHILD = "Parse error: unknown element child code";
	const char* const BAD_NOTATION_POSITION = "Illegal startposition for a Notation value";
	const char* const BAD_STRING_POSITION = "Illegal startposition for a NonIdentifyingStringOrIndex value";
	const char* const BAD_ENCODED_POSITION = "Illegal startposition for an encodedCharacterString";

	const unsigned int CDATA_ALGORITHM = 10;
	const unsigned int ABSENT = 0xFFFFFFFF;
	const std::size_t LISTED_ENTRIES = 8;   // entries of an initial-vocabulary table shown


	std::string tableName(DocumentVocabulary::ID id)
	{
		switch (id)
		{
		case DocumentVocabulary::PREFIX:                  return "prefix";
		case DocumentVocabulary::NAMESPACE_NAME:          return "namespace-name";
		case DocumentVocabulary::LOCAL_NAME:              return "local-name";
		case DocumentVocabulary::OTHER_NCNAME:            return "other-ncname";
		case DocumentVocabulary::OTHER_URI:               return "other-uri";
		case DocumentVocabulary::ATTRIBUTE_VALUE:         return "attribute-value";
		case DocumentVocabulary::OTHER_STRING:            return "other-string";
		case DocumentVocabulary::CONTENT_CHARACTER_CHUNK: return "chunk";
		case DocumentVocabulary::ELEMENT_NAME:            return "element-name";
		case DocumentVocabulary::ATTRIBUTE_NAME:          return "attribute-name";
		default:                                          return "table " + NumberFormatter::format(static_cast<int>(id));
		}
	}


	std::string entry(const std::string& table, unsigned int index)
	{
		return table + "[" + NumberFormatter::format(index) + "]";
	}


	std::string algorithmName(unsigned int index)
	{
		static const char* const NAMES[] =
		{
			"", "hexadecimal", "base64", "short", "int", "long", "boolean", "float", "double", "uuid", "cdata"
		};
		return index < sizeof(NAMES) / sizeof(NAMES[0]) ? NAMES[index] : "user-defined";
	}


	std::string alphabetName(unsigned int index)
	{
		if (index == 1) return " (numeric)";
		if (index == 2) return " (date and time)";
		return std::string();
	}


	std::string qualifiedName(const std::string& prefix, const std::string& localName)
	{
		return prefix.empty() ? localName : prefix + ":" + localName;
	}


	Poco::UInt64 octetOf(Poco::UInt64 bits)
	{
		return bits / 8;
	}
}


DocumentDumper::DocumentDumper(std::ostream& out, const Ixor::FastInfoset::FastInfosetParser& loader):
	_out(out),
	_loader(loader),
	_vocabulary(DocumentVocabulary::VOC_VECTOR),
	_pReader(0),
	_stoppedAt(0)
{
}


DocumentDumper::~DocumentDumper()
{
}


void DocumentDumper::dump(const char* data, std::size_t size)
{
	Reader r(data, size);
	_pReader = &r;
	try
	{
		_out << "Fast Infoset document, " << size << " octets\n";
		dumpHeader(r, data, size);
		_summary.setHeaderBits(bitsAt(r));
		_out << "Items (octet offset, item, how it is coded)\n";
		dumpChildren(r);
		// The parser stops before the document's terminator; the listing
		// takes it and tells of octets that follow.
		line(r.octetsConsumed(), 0, "end of document");
		r.skip(4);
		r.skipToByteStart();
		if (r.octetsConsumed() < size)
			_out << "  (" << size - r.octetsConsumed() << " more octets follow the document and are not read)\n";
	}
	catch (...)
	{
		_stoppedAt = std::min<Poco::UInt64>(r.octetsConsumed(), size);
		_pReader = 0;
		_out.flush();
		throw;
	}
	_stoppedAt = std::min<Poco::UInt64>(r.octetsConsumed(), size);
	_pReader = 0;
	_summary.print(_out, size);
	DumpSummary::printVocabulary(_out, _vocabulary);
}


Poco::UInt64 DocumentDumper::offset() const
{
	return _pReader ? _pReader->octetsConsumed() : _stoppedAt;
}


//
// Header
//
void DocumentDumper::dumpHeader(Reader& r, const char* data, std::size_t size)
{
	std::string declaration;
	Decoder::documentPreHeader(r, declaration);
	_out << "Header\n";
	_out << "  pre-header: " << (declaration.empty() ? std::string("none") : TextFormat::quoted(declaration, 64)) << '\n';
	_out << "  version: 1\n";

	if (r.eof()) throw FISParseException(END_OF_HEADER);
	unsigned int bits = 0;
	if (!r.read(bits, 7)) throw FISParseException(END_OF_HEADER);
	static const char* const COMPONENTS[] =
	{
		"additional data", "initial vocabulary", "notations", "unparsed entities",
		"character encoding scheme", "standalone", "version"
	};
	std::string present;
	for (int i = 0; i < 7; ++i)
	{
		if (!(bits & (0x40u >> i))) continue;
		if (!present.empty()) present += ", ";
		present += COMPONENTS[i];
	}
	_out << "  optional components: " << (present.empty() ? std::string("none") : present) << '\n';

	if (bits & 0x40)
	{
		Decoder::skipAdditionalData(r);
		_out << "  additional data: read and dropped\n";
	}
	if (bits & 0x20) dumpInitialVocabulary(r, data, size);
	else _vocabulary.reset();

	Decoder::OpenHeaderParts parts;
	parts.notations = (bits & 0x10) != 0;
	parts.unparsedEntities = (bits & 0x08) != 0;
	parts.characterEncodingScheme = (bits & 0x04) != 0;
	parts.standalone = (bits & 0x02) != 0;
	parts.version = (bits & 0x01) != 0;
	dumpHeaderParts(r, parts);
}


void DocumentDumper::dumpInitialVocabulary(Reader& r, const char* data, std::size_t size)
{
	_out << "  initial vocabulary:\n";
	r.skip(3);
	unsigned int flags = 0;
	if (!r.read(flags, 13)) throw FISParseException("Unexpected end of stream while parsing initial vocabulary");
	if (flags == 0) throw FISException("Initial Vocabulary detected with zero information in it - at least one dictionary required");

	if (flags & 0x1000)
	{
		// The library reads the URI and loads the vocabulary in one step; a
		// second reader over the same octets shows the URI first, so that
		// it is listed even when loading fails.
		const Poco::UInt64 at = r.octetsConsumed();
		if (at < size)
		{
			Reader uriReader(data + at, size - static_cast<std::size_t>(at));
			uriReader.skip(r.bitPos() + 1);
			std::string uri;
			Decoder::nonEmptyOctetString(uriReader, uri);
			_out << "    external vocabulary: " << TextFormat::quoted(uri, 200) << '\n';
		}
		r.skip(1);
		std::string uri;
		Decoder::nonEmptyOctetString(r, uri);
		_loader.loadExternalVocabulary(uri, _vocabulary);
		_out << "      loaded\n";
	}
	else _vocabulary.reset();

	if (flags & 0x0800)
	{
		const std::size_t before = _vocabulary.restrictedAlphabets().alphabets().size();
		Decoder::handleRestrictedAlphabet(r, _vocabulary);
		const std::vector<Ixor::FastInfoset::RestrictedAlphabet>& alphabets = _vocabulary.restrictedAlphabets().alphabets();
		_out << "    restricted alphabets: " << alphabets.size() - before << " from index " << before + 1 << ":";
		for (std::size_t i = before; i < alphabets.size(); ++i)
			_out << (i == before ? " " : ", ") << TextFormat::quoted(alphabets[i].characters());
		_out << '\n';
	}
	if (flags & 0x0400)
	{
		Decoder::skipEncodingAlgos(r, _vocabulary);
		_out << "    encoding algorithms: read and dropped (only the built-in ones are known)\n";
	}

	struct Table
	{
		unsigned int flag;
		const char* label;
		DocumentVocabulary::ID id;
		bool encoded;
	};
	// The stream carries content character chunks before other strings.
	static const Table TABLES[] =
	{
		{0x0200, "prefixes", DocumentVocabulary::PREFIX, false},
		{0x0100, "namespace names", DocumentVocabulary::NAMESPACE_NAME, false},
		{0x0080, "local names", DocumentVocabulary::LOCAL_NAME, false},
		{0x0040, "other NCNames", DocumentVocabulary::OTHER_NCNAME, false},
		{0x0020, "other URIs", DocumentVocabulary::OTHER_URI, false},
		{0x0010, "attribute values", DocumentVocabulary::ATTRIBUTE_VALUE, true},
		{0x0008, "content character chunks", DocumentVocabulary::CONTENT_CHARACTER_CHUNK, true},
		{0x0004, "other strings", DocumentVocabulary::OTHER_STRING, true}
	};
	for (const Table& table: TABLES)
	{
		if (!(flags & table.flag)) continue;
		Vocabulary<std::string>* pTable = _vocabulary.vocabulary(table.id);
		const std::size_t before = pTable->size();
		if (table.encoded) Decoder::handleEncodedCharacterStringVoc(r, pTable, _vocabulary);
		else Decoder::handleVocabulary(r, pTable);
		listTable(table.label, table.id, before);
	}
	if (flags & 0x0002)
	{
		const std::size_t before = _vocabulary.elementVocabulary()->size();
		Decoder::handleNameSurrogatesVoc(r, _vocabulary.elementVocabulary());
		listNames("element names", true, before);
	}
	if (flags & 0x0001)
	{
		const std::size_t before = _vocabulary.attributeVocabulary()->size();
		Decoder::handleNameSurrogatesVoc(r, _vocabulary.attributeVocabulary());
		listNames("attribute names", false, before);
	}
}


void DocumentDumper::listTable(const std::string& label, DocumentVocabulary::ID id, std::size_t from)
{
	const Vocabulary<std::string>& table = *_vocabulary.vocabulary(id);
	_out << "    " << label << ": " << table.size() - from << " from " << entry(tableName(id), static_cast<unsigned int>(from)) << ":";
	for (std::size_t i = from; i < table.size() && i < from + LISTED_ENTRIES; ++i)
		_out << (i == from ? " " : ", ") << TextFormat::quoted(table.value(static_cast<unsigned int>(i)), 32);
	if (table.size() > from + LISTED_ENTRIES) _out << ", ... (" << table.size() - from - LISTED_ENTRIES << " more)";
	_out << '\n';
}


void DocumentDumper::listNames(const std::string& label, bool element, std::size_t from)
{
	const Vocabulary<QualifiedNameEntry>& table = element ? *_vocabulary.elementVocabulary() : *_vocabulary.attributeVocabulary();
	_out << "    " << label << ": " << table.size() - from << " from "
		<< entry(tableName(element ? DocumentVocabulary::ELEMENT_NAME : DocumentVocabulary::ATTRIBUTE_NAME), static_cast<unsigned int>(from)) << ":";
	for (std::size_t i = from; i < table.size() && i < from + LISTED_ENTRIES; ++i)
	{
		const QualifiedNameEntry& name = table.value(static_cast<unsigned int>(i));
		_out << (i == from ? " " : ", ")
			<< qualifiedName(resolve(DocumentVocabulary::PREFIX, name.prefixId()), resolve(DocumentVocabulary::LOCAL_NAME, name.localNameId()));
	}
	if (table.size() > from + LISTED_ENTRIES) _out << ", ... (" << table.size() - from - LISTED_ENTRIES << " more)";
	_out << '\n';
}


void DocumentDumper::dumpHeaderParts(Reader& r, const Decoder::OpenHeaderParts& parts)
{
	if (parts.notations)
	{
		dumpDeclarations(r, 6, 0x30, 60, "Unexpected end of stream while parsing notation",
			"Notations do not end with a terminator", &DocumentDumper::dumpNotation);
	}
	if (parts.unparsedEntities)
	{
		dumpDeclarations(r, 7, 0x68, 120, "Unexpected end of stream while parsing unparsed entity",
			"Unparsed entities do not end with a terminator", &DocumentDumper::dumpUnparsedEntity);
	}
	if (parts.characterEncodingScheme)
	{
		r.skip(1);
		Decoder::nonEmptyOctetString(r, _octets);
		_out << "  character encoding scheme: " << TextFormat::quoted(_octets) << " (not reported)\n";
	}
	if (parts.standalone)
	{
		bool standalone = false;
		r.skip(7);
		if (!r.read(standalone)) throw FISParseException("Unexpected end of stream while parsing standalone");
		_out << "  standalone: " << (standalone ? "yes" : "no") << " (not reported)\n";
	}
	if (parts.version)
	{
		Text version;
		readNonIdentifying(r, DocumentVocabulary::OTHER_STRING, version);
		_out << "  version: " << TextFormat::quoted(version.value) << "  " << version.how << " (not reported)\n";
	}
}


void DocumentDumper::dumpDeclarations(Reader& r, int idBits, unsigned char itemId, unsigned char terminator,
	const char* endMessage, const char* unterminatedMessage, void (DocumentDumper::*dumpItem)(Reader&))
	/// Items whose identification takes idBits bits, up to the terminator
	/// and the padding to the next octet.
{
	unsigned char id = 0;
	if (!r.read(id, idBits)) throw FISParseException(endMessage);
	while (id == itemId)
	{
		(this->*dumpItem)(r);
		if (!r.read(id, idBits)) throw FISParseException(endMessage);
	}
	if (id != terminator) throw FISEncodingException(unterminatedMessage);
	r.skip(8 - idBits);
}


void DocumentDumper::dumpNotation(Reader& r)
{
	const Poco::UInt64 start = bitsAt(r);
	if (r.bitPos() != 6) throw FISEncodingException(BAD_NOTATION_POSITION);
	bool systemPresent = false;
	bool publicPresent = false;
	bool ok = r.read(systemPresent);
	ok = r.read(publicPresent) && ok;
	if (!ok) throw FISParseException("Unexpected end of stream while parsing notation");
	std::string how;
	std::string text = "notation " + readIdentifying(r, DocumentVocabulary::OTHER_NCNAME, how);
	std::string hows = "name " + how;
	if (systemPresent)
	{
		text += " system " + TextFormat::quoted(readIdentifying(r, DocumentVocabulary::OTHER_URI, how), 80);
		hows += ", system " + how;
	}
	if (publicPresent)
	{
		text += " public " + TextFormat::quoted(readIdentifying(r, DocumentVocabulary::OTHER_URI, how), 80);
		hows += ", public " + how;
	}
	_summary.countDeclaration();
	line(octetOf(start), 1, text + "  " + hows);
}


void DocumentDumper::dumpUnparsedEntity(Reader& r)
{
	const Poco::UInt64 start = bitsAt(r);
	if (r.bitPos() != 7) throw FISEncodingException("Illegal startposition for an UnparsedEntity value");
	bool publicPresent = false;
	if (!r.read(publicPresent)) throw FISParseException("Unexpected end of stream while parsing unparsed entity");
	std::string how;
	std::string text = "unparsed entity " + readIdentifying(r, DocumentVocabulary::OTHER_NCNAME, how);
	std::string hows = "name " + how;
	text += " system " + TextFormat::quoted(readIdentifying(r, DocumentVocabulary::OTHER_URI, how), 80);
	hows += ", system " + how;
	if (publicPresent)
	{
		text += " public " + TextFormat::quoted(readIdentifying(r, DocumentVocabulary::OTHER_URI, how), 80);
		hows += ", public " + how;
	}
	text += " notation " + readIdentifying(r, DocumentVocabulary::OTHER_NCNAME, how);
	hows += ", notation " + how;
	_summary.countDeclaration();
	line(octetOf(start), 1, text + "  " + hows);
}


//
// Items
//
void DocumentDumper::dumpChildren(Reader& r)
	/// Reads children until the document's terminator, keeping the depth
	/// instead of recursing, like the parser.
{
	int depth = 0;
	for (;;)
	{
		unsigned char bits = 0;
		if (!r.peek(bits, 4)) throw FISParseException(END_OF_CHILDREN);
		if (bits != 15)
		{
			if (dumpChild(r, depth)) ++depth;
			continue;
		}
		if (depth == 0) return;

		unsigned char terminator = 0;
		if (!r.read(terminator, 4)) throw FISParseException(END_OF_ELEMENT);
		--depth;
	}
}


bool DocumentDumper::dumpChild(Reader& r, int depth)
	/// Returns true when the child was an element, whose children follow.
{
	r.skipToByteStart();
	unsigned char code = 0;
	if (!r.peek(code, 8)) throw FISParseException(END_OF_CHILDREN);
	if ((code & 0x80) == 0)
	{
		r.skip(1);
		if (static_cast<std::size_t>(depth) >= MAX_DEPTH) throw FISParseException("Maximum element depth exceeded");
		dumpElement(r, depth);
		return true;
	}
	if ((code & 0xC0) == 0x80)
	{
		dumpCharacterChunk(r, depth);
	}
	else if ((code & 0xE0) == 0xC0)
	{
		r.skip(6);
		if ((code & 0xFC) == 0xC4) dumpDocumentTypeDeclaration(r, depth);
		else if ((code & 0xFC) == 0xC8) dumpEntityReference(r, depth);
		else throw FISEncodingException("Invalid child element");
	}
	else if (code == 0xE1 || code == 0xE2)
	{
		if (code == 0xE1) dumpProcessingInstruction(r, depth);
		else dumpComment(r, depth);
	}
	else
	{
		r.skip(8);
		throw FISEncodingException(BAD_CHILD);
	}
	return false;
}


void DocumentDumper::dumpElement(Reader& r, int depth)
{
	const Poco::UInt64 start = r.octetsConsumed();
	if (r.bitPos() != 1) throw FISEncodingException("Illegal startposition for an Element value");
	bool hasAttributes = false;
	if (!r.read(hasAttributes)) throw FISParseException(END_OF_ELEMENT);

	// Namespace attributes come before the element's name in the stream;
	// they are listed after the element's own line, with the attributes.
	std::vector<std::pair<Poco::UInt64, std::string>> details;
	unsigned char bits = 0;
	if (!r.peek(bits, 6)) throw FISParseException(END_OF_ELEMENT);
	if (bits == 0x38)
	{
		r.skip(6);
		if (!r.read(bits, 4)) throw FISParseException(END_OF_ELEMENT);
		while (bits != 15)
		{
			r.skip(2);
			const Poco::UInt64 at = r.octetsConsumed();
			details.push_back(std::make_pair(at, readNamespace(r)));
			if (!r.read(bits, 4)) throw FISParseException(END_OF_ELEMENT);
		}
		r.skip(6);
	}

	Name name;
	readQualifiedName(r, true, name);
	_summary.countName(name.literal);
	std::string text = "element " + name.qname;
	if (name.literal && !name.uri.empty()) text += " {" + name.uri + "}";

	if (hasAttributes)
	{
		bool end = false;
		if (!r.read(end)) throw FISParseException(END_OF_ELEMENT);
		while (!end)
		{
			const Poco::UInt64 at = r.octetsConsumed();
			details.push_back(std::make_pair(at, readAttribute(r)));
			if (!r.read(end)) throw FISParseException(END_OF_ELEMENT);
		}
		r.skip(3);
	}
	_summary.countElement();
	line(start, depth, text + "  name " + name.how);
	for (const std::pair<Poco::UInt64, std::string>& detail: details) line(detail.first, depth + 1, detail.second);
}


std::string DocumentDumper::readNamespace(Reader& r)
{
	if (r.bitPos() != 6) throw FISEncodingException("Illegal startposition for a NamespaceAttribute value");
	bool prefixPresent = false;
	bool namespacePresent = false;
	bool ok = r.read(prefixPresent);
	ok = r.read(namespacePresent) && ok;
	if (!ok) throw FISParseException("Unexpected end of stream while parsing namespace attribute");

	const Poco::UInt64 names = bitsAt(r);
	std::string text = "namespace xmlns";
	std::string hows;
	std::string how;
	if (prefixPresent)
	{
		text += ":" + readIdentifying(r, DocumentVocabulary::PREFIX, how);
		hows = "  prefix " + how;
	}
	std::string uri;
	if (namespacePresent)
	{
		uri = readIdentifying(r, DocumentVocabulary::NAMESPACE_NAME, how);
		hows += (hows.empty() ? "  name " : ", name ") + how;
	}
	_summary.addBits(DumpSummary::NAMES, bitsAt(r) - names);
	_summary.countNamespace();
	return text + "=" + TextFormat::quoted(uri, 200) + hows;
}


std::string DocumentDumper::readAttribute(Reader& r)
{
	if (r.bitPos() != 1) throw FISEncodingException("Illegal startposition for a Attribute value");
	Name name;
	readQualifiedName(r, false, name);
	_summary.countName(name.literal);
	_summary.countAttribute();

	const Poco::UInt64 start = bitsAt(r);
	Text value;
	readNonIdentifying(r, DocumentVocabulary::ATTRIBUTE_VALUE, value);
	_summary.addBits(DumpSummary::ATTRIBUTE_VALUES, bitsAt(r) - start);
	_summary.countAttributeValue(value.literal);

	std::string text = "attribute " + name.qname;
	if (name.literal && !name.uri.empty()) text += " {" + name.uri + "}";
	return text + "=" + TextFormat::quoted(value.value) + "  name " + name.how + ", value " + value.how;
}


void DocumentDumper::readQualifiedName(Reader& r, bool element, Name& name)
{
	const Poco::UInt64 start = bitsAt(r);
	const int pos = r.bitPos();
	if (pos != 1 && pos != 2) throw FISEncodingException("Illegal startposition for a parseQualifiedNameOrIndex value");
	unsigned char bits = 0;
	if (!r.peek(bits, 4)) throw FISParseException("Unexpected end of stream while parsing qualified name or index");
	const std::string table = tableName(element ? DocumentVocabulary::ELEMENT_NAME : DocumentVocabulary::ATTRIBUTE_NAME);
	Vocabulary<QualifiedNameEntry>& names = element ? *_vocabulary.elementVocabulary() : *_vocabulary.attributeVocabulary();
	if (bits == 15)
	{
		r.skip(pos == 1 ? 5 : 4);
		bool prefixPresent = false;
		bool namespacePresent = false;
		bool ok = r.read(prefixPresent);
		ok = r.read(namespacePresent) && ok;
		if (!ok) throw FISParseException("Unexpected end of stream while parsing qualified name");

		std::string how;
		std::string parts;
		std::string prefix;
		unsigned int prefixIndex = 0;
		unsigned int namespaceIndex = 0;
		unsigned int localIndex = 0;
		if (prefixPresent)
		{
			prefix = readIdentifying(r, DocumentVocabulary::PREFIX, how, prefixIndex);
			parts = "prefix: " + how + ", ";
		}
		if (namespacePresent)
		{
			name.uri = readIdentifying(r, DocumentVocabulary::NAMESPACE_NAME, how, namespaceIndex);
			parts += "namespace: " + how + ", ";
		}
		const std::string localName = readIdentifying(r, DocumentVocabulary::LOCAL_NAME, how, localIndex);
		parts += "local: " + how;
		bool found = false;
		const unsigned int index = names.index(QualifiedNameEntry(prefixIndex, namespaceIndex, localIndex), found);
		name.qname = qualifiedName(prefix, localName);
		name.literal = true;
		name.how = "literal → " + entry(table, index) + " (" + parts + ")";
	}
	else
	{
		unsigned int index = 0;
		Decoder::integer(r, index);
		const QualifiedNameEntry& entryValue = names.value(index);
		name.qname = qualifiedName(resolve(DocumentVocabulary::PREFIX, entryValue.prefixId()), resolve(DocumentVocabulary::LOCAL_NAME, entryValue.localNameId()));
		name.uri = resolve(DocumentVocabulary::NAMESPACE_NAME, entryValue.namespaceId());
		name.literal = false;
		name.how = entry(table, index);
	}
	_summary.addBits(DumpSummary::NAMES, bitsAt(r) - start);
}


void DocumentDumper::dumpCharacterChunk(Reader& r, int depth)
{
	const Poco::UInt64 start = bitsAt(r);
	r.skip(2);
	if (r.bitPos() != 2) throw FISEncodingException("Illegal startposition for a CharacterChunk value");
	Text text;
	readNonIdentifying(r, DocumentVocabulary::CONTENT_CHARACTER_CHUNK, text);
	const bool typed = text.algorithm != 0 && text.algorithm != CDATA_ALGORITHM;
	_summary.addBits(typed ? DumpSummary::TYPED_DATA : DumpSummary::CHARACTER_CONTENT, bitsAt(r) - start);
	_summary.countChunk(text.literal, typed);
	std::string kind = "text";
	if (text.algorithm == CDATA_ALGORITHM) kind = "cdata";
	else if (typed) kind = "data " + algorithmName(text.algorithm);
	line(octetOf(start), depth, kind + " " + TextFormat::quoted(text.value) + "  " + text.how);
}


void DocumentDumper::dumpComment(Reader& r, int depth)
{
	const Poco::UInt64 start = bitsAt(r);
	r.skip(8);
	Text text;
	readNonIdentifying(r, DocumentVocabulary::OTHER_STRING, text);
	_summary.addBits(DumpSummary::COMMENTS_AND_PIS, bitsAt(r) - start);
	_summary.countComment();
	line(octetOf(start), depth, "comment " + TextFormat::quoted(text.value) + "  " + text.how);
}


void DocumentDumper::dumpProcessingInstruction(Reader& r, int depth)
{
	const Poco::UInt64 start = bitsAt(r);
	r.skip(8);
	std::string targetHow;
	const std::string target = readIdentifying(r, DocumentVocabulary::OTHER_NCNAME, targetHow);
	Text data;
	readNonIdentifying(r, DocumentVocabulary::OTHER_STRING, data);
	_summary.addBits(DumpSummary::COMMENTS_AND_PIS, bitsAt(r) - start);
	_summary.countProcessingInstruction();
	line(octetOf(start), depth, "pi " + target + " " + TextFormat::quoted(data.value) + "  target " + targetHow + ", data " + data.how);
}


void DocumentDumper::dumpDocumentTypeDeclaration(Reader& r, int depth)
{
	const Poco::UInt64 start = r.octetsConsumed();
	if (r.bitPos() != 6) throw FISEncodingException("Illegal startposition for a DocumentTypeDeclaration value");
	bool systemPresent = false;
	bool publicPresent = false;
	bool ok = r.read(systemPresent);
	ok = r.read(publicPresent) && ok;
	if (!ok) throw FISParseException("Unexpected end of stream while parsing document type declaration");
	std::string text = "doctype";
	std::string hows;
	std::string how;
	if (systemPresent)
	{
		text += " system " + TextFormat::quoted(readIdentifying(r, DocumentVocabulary::OTHER_URI, how), 80);
		hows = "  system " + how;
	}
	if (publicPresent)
	{
		text += " public " + TextFormat::quoted(readIdentifying(r, DocumentVocabulary::OTHER_URI, how), 80);
		hows += (hows.empty() ? "  public " : ", public ") + how;
	}
	_summary.countDeclaration();
	line(start, depth, text + hows);

	unsigned char stat = 0;
	if (!r.read(stat, 4)) throw FISParseException("Unexpected end of stream while parsing document type declaration");
	while (stat == 14)
	{
		// The four bits read are the first half of the instruction's octet.
		r.skip(4);
		const Poco::UInt64 at = bitsAt(r);
		std::string targetHow;
		const std::string target = readIdentifying(r, DocumentVocabulary::OTHER_NCNAME, targetHow);
		Text data;
		readNonIdentifying(r, DocumentVocabulary::OTHER_STRING, data);
		_summary.addBits(DumpSummary::COMMENTS_AND_PIS, bitsAt(r) - at + 8);
		_summary.countProcessingInstruction();
		line(octetOf(at) - 1, depth + 1, "pi " + target + " " + TextFormat::quoted(data.value) + "  target " + targetHow + ", data " + data.how);
		if (!r.read(stat, 4)) throw FISParseException("Unexpected end of stream while parsing document type declaration");
	}
	if (stat != 15) throw FISEncodingException("Document type declaration does not end with a terminator");
}


void DocumentDumper::dumpEntityReference(Reader& r, int depth)
{
	const Poco::UInt64 start = r.octetsConsumed();
	if (r.bitPos() != 6) throw FISEncodingException(BAD_NOTATION_POSITION);
	bool systemPresent = false;
	bool publicPresent = false;
	bool ok = r.read(systemPresent);
	ok = r.read(publicPresent) && ok;
	if (!ok) throw FISParseException("Unexpected end of stream while parsing unexpanded entity reference");
	std::string how;
	std::string text = "entity reference &" + readIdentifying(r, DocumentVocabulary::OTHER_NCNAME, how) + ";";
	std::string hows = "  name " + how;
	if (systemPresent)
	{
		text += " system " + TextFormat::quoted(readIdentifying(r, DocumentVocabulary::OTHER_URI, how), 80);
		hows += ", system " + how;
	}
	if (publicPresent)
	{
		text += " public " + TextFormat::quoted(readIdentifying(r, DocumentVocabulary::OTHER_URI, how), 80);
		hows += ", public " + how;
	}
	_summary.countDeclaration();
	line(start, depth, text + hows + " (the parser reports it to nobody)");
}


//
// Strings
//
const std::string& DocumentDumper::readIdentifying(Reader& r, DocumentVocabulary::ID id, std::string& how)
{
	unsigned int index = 0;
	return readIdentifying(r, id, how, index);
}


const std::string& DocumentDumper::readIdentifying(Reader& r, DocumentVocabulary::ID id, std::string& how, unsigned int& index)
{
	if (r.bitPos() != 0) throw FISEncodingException("Illegal startposition for an parseIdentifyingStringOrIndex");
	bool isIndex = false;
	if (!r.read(isIndex)) throw FISParseException("Unexpected end of stream while parsing identifying string or index");
	if (isIndex)
	{
		Decoder::integer(r, index);
		how = entry(tableName(id), index);
	}
	else
	{
		Decoder::nonEmptyOctetString(r, _octets);
		bool found = false;
		index = _vocabulary.index(id, _octets, found);
		how = "literal UTF-8 → " + entry(tableName(id), index);
	}
	return _vocabulary.value(id, index);
}


void DocumentDumper::readNonIdentifying(Reader& r, DocumentVocabulary::ID id, Text& text)
{
	const int pos = r.bitPos();
	if (pos != 0 && pos != 2) throw FISEncodingException(BAD_STRING_POSITION);
	bool isIndex = false;
	if (!r.read(isIndex)) throw FISParseException("Unexpected end of stream while parsing non identifying string or index");
	if (isIndex)
	{
		unsigned int index = 0;
		Decoder::integer(r, index);
		text.value = _vocabulary.value(id, index);
		text.how = entry(tableName(id), index);
		text.literal = false;
		text.algorithm = 0;
		return;
	}
	bool addToTable = false;
	if (!r.read(addToTable)) throw FISParseException("Unexpected end of stream while parsing encoded character string");
	readEncoded(r, text);
	text.literal = true;
	if (addToTable)
	{
		bool found = false;
		const unsigned int index = _vocabulary.index(id, text.value, found);
		text.how = "literal " + text.how + " → " + entry(tableName(id), index);
	}
	else text.how = "literal " + text.how + ", not added";
}


void DocumentDumper::readEncoded(Reader& r, Text& text)
{
	const int pos = r.bitPos();
	if (pos != 2 && pos != 4) throw FISEncodingException(BAD_ENCODED_POSITION);
	text.algorithm = 0;
	unsigned char encoding = 0;
	if (!r.read(encoding, 2)) throw FISParseException("Unexpected end of stream while parsing encoded character string");
	switch (encoding)
	{
	case DocumentVocabulary::UTF8:
		Decoder::nonEmptyOctetString(r, text.value);
		text.how = "UTF-8";
		break;
	case DocumentVocabulary::UTF16:
		Decoder::nonEmptyOctetString(r, _octets);
		StringDecoder::decodeUTF16(_octets, text.value);
		text.how = "UTF-16";
		break;
	case DocumentVocabulary::RESTRICTEDALPHABET:
	{
		unsigned int alphabet = 0;
		Decoder::integer(r, alphabet);
		Decoder::nonEmptyOctetString(r, _octets);
		StringDecoder::decodeAlphabet(_octets, _vocabulary.restrictedAlphabets().alphabet(alphabet), text.value);
		text.how = "alphabet " + NumberFormatter::format(alphabet) + alphabetName(alphabet);
		break;
	}
	default:
	{
		unsigned int index = 0;
		Decoder::integer(r, index);
		Ixor::AutoPtr<Ixor::FastInfoset::Encoding> pValue = _vocabulary.decodings().read(static_cast<int>(index), r);
		text.value = pValue->content();
		text.algorithm = pValue->type();
		text.how = "algorithm " + NumberFormatter::format(index) + " (" + algorithmName(index) + ")";
		break;
	}
	}
}


std::string DocumentDumper::resolve(DocumentVocabulary::ID id, unsigned int index) const
{
	// Names from an initial vocabulary mark an absent prefix or namespace
	// with all bits set.
	if (index == ABSENT) return std::string();
	return _vocabulary.value(id, index);
}


void DocumentDumper::line(Poco::UInt64 offset, int depth, const std::string& text)
{
	_out << TextFormat::padLeft(NumberFormatter::format(offset), 8) << "  " << std::string(2 * static_cast<std::size_t>(depth), ' ') << text << '\n';
}


Poco::UInt64 DocumentDumper::bitsAt(const Reader& r)
{
	return static_cast<Poco::UInt64>(r.octetsConsumed()) * 8 + static_cast<Poco::UInt64>(r.bitPos());
}


} // namespace Fitool

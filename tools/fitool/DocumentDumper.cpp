#include "DocumentDumper.h"
#include "DumpSummary.h"
#include "TextFormat.h"
#include "ItemReader.h"
#include "Ixor/FastInfoset/BitStreamReader.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Ixor/FastInfoset/QualifiedNameEntry.h"
#include "Ixor/FastInfoset/Vocabulary.h"
#include "Poco/NumberFormatter.h"
#include <algorithm>
#include <initializer_list>
#include <ostream>
#include <string>
#include <utility>
#include <vector>


using Ixor::FastInfoset::BitStreamReader;
using Ixor::FastInfoset::DocumentVocabulary;
using Ixor::FastInfoset::Encoding;
using Ixor::FastInfoset::FastInfosetParser;
using Ixor::FastInfoset::HeaderListener;
using Ixor::FastInfoset::ItemReader;
using Ixor::FastInfoset::QualifiedNameEntry;
using Ixor::FastInfoset::Vocabulary;
using Poco::NumberFormatter;


namespace Fitool {


namespace
{
	typedef ItemReader::Coding Coding;
	typedef ItemReader::NameCoding NameCoding;

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


	std::string entry(DocumentVocabulary::ID table, unsigned int index)
	{
		return tableName(table) + "[" + NumberFormatter::format(index) + "]";
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


	std::string how(const Coding& coding)
		/// "chunk[3]", "literal UTF-8 → chunk[4]", "literal alphabet 1
		/// (numeric), not added"...
	{
		if (coding.form == Coding::INDEXED) return entry(coding.table, coding.index);
		std::string encoding;
		switch (coding.encoding)
		{
		case DocumentVocabulary::UTF8:
			encoding = "UTF-8";
			break;
		case DocumentVocabulary::UTF16:
			encoding = "UTF-16";
			break;
		case DocumentVocabulary::RESTRICTEDALPHABET:
			encoding = "alphabet " + NumberFormatter::format(coding.number) + alphabetName(coding.number);
			break;
		default:
			encoding = "algorithm " + NumberFormatter::format(coding.number) + " (" + algorithmName(coding.number) + ")";
			break;
		}
		return "literal " + encoding + (coding.added ? " → " + entry(coding.table, coding.index) : std::string(", not added"));
	}


	std::string how(const NameCoding& coding)
	{
		if (coding.name.form == Coding::INDEXED) return entry(coding.name.table, coding.name.index);
		std::string parts;
		if (coding.prefix.form != Coding::ABSENT) parts = "prefix: " + how(coding.prefix) + ", ";
		if (coding.namespaceName.form != Coding::ABSENT) parts += "namespace: " + how(coding.namespaceName) + ", ";
		parts += "local: " + how(coding.localName);
		return "literal → " + entry(coding.name.table, coding.name.index) + " (" + parts + ")";
	}


	void appendPart(std::string& text, std::string& hows, const char* label, const Coding& coding, const std::string& value)
		/// A part that an item may have (a system or public identifier): to
		/// the item's text, and how it was coded to the list of hows.
	{
		if (coding.form == Coding::ABSENT) return;
		text += std::string(" ") + label + " " + TextFormat::quoted(value, 80);
		hows += (hows.empty() ? "  " : ", ") + std::string(label) + " " + how(coding);
	}


	std::string qualifiedName(const std::string& prefix, const std::string& localName)
	{
		return prefix.empty() ? localName : prefix + ":" + localName;
	}


	std::string nameText(const ItemReader::NameEntry& name, const NameCoding& coding)
		/// The qualified name, and the namespace of a literal one.
	{
		std::string text = qualifiedName(*name.name.pPrefix, *name.name.pLocalName);
		if (coding.name.form == Coding::LITERAL && !name.name.pUri->empty()) text += " {" + *name.name.pUri + "}";
		return text;
	}
}


class DocumentDumper::Listing: public HeaderListener
	/// The sink of the item reader that prints each item as it comes, and
	/// counts it for the summary.
{
public:
	static constexpr bool DETAILED = true;

	Listing(std::ostream& out, const FastInfosetParser& settings, ItemReader& items, const BitStreamReader& reader);

	const DumpSummary& summary() const;

	// What the header decoding asks and tells
	bool loadExternalVocabulary(const std::string& uri, DocumentVocabulary& vocabulary) override;
	void presenceRead(unsigned int bits) override;
	void additionalDataRead() override;
	void initialVocabularyStarts() override;
	void externalVocabularyNamed(const std::string& uri) override;
	void listRead(DocumentVocabulary::ID table, std::size_t first) override;

	// Items
	bool inHandler() const;
	void fatalError(const std::string& message);
	void xmlDeclaration(const std::string& text);
	void vocabularyRead(const DocumentVocabulary& vocabulary);
	void noteNotation(Poco::UInt64 octet, const Coding& name, const Coding& systemId, const Coding& publicId);
	void notation(const std::string& name, const std::string* pPublicId, const std::string* pSystemId);
	void noteUnparsedEntity(Poco::UInt64 octet, const Coding& name, const Coding& systemId, const Coding& publicId, const Coding& notationName);
	void unparsedEntity(const std::string& name, const std::string* pPublicId, const std::string& systemId, const std::string& notationName);
	void characterEncodingScheme(const std::string& name);
	void standalone(bool standalone);
	void version(const std::string& version, const Coding& coding);
	void startDocument();
	void noteNamespace(Poco::UInt64 octet, const Coding& prefix, const Coding& uri);
	void startPrefixMapping(const std::string& prefix, const std::string& uri);
	void noteAttribute(Poco::UInt64 octet, const NameCoding& name, const Coding& value);
	void noteElement(Poco::UInt64 octet, const NameCoding& name);
	void startElement(const ItemReader::NameEntry& element);
	void endElement(const ItemReader::NameEntry& element);
	void endPrefixMapping(const std::string& prefix);
	void noteChunk(Poco::UInt64 octet, const Coding& value);
	void characters(const char* pData, std::size_t length);
	void value(Encoding& value);
	void noteComment(Poco::UInt64 octet, const Coding& text);
	void comment(const std::string& text);
	void noteProcessingInstruction(Poco::UInt64 octet, const Coding& target, const Coding& data);
	void processingInstruction(const std::string& target, const std::string& data);
	void noteDocumentType(Poco::UInt64 octet, const Coding& systemId, const Coding& publicId);
	void startDTD(const std::string& publicId, const std::string& systemId);
	void endDTD();
	void entityReference(Poco::UInt64 octet, const std::string& name, const std::string& systemId, const std::string& publicId, const Coding codings[3]);
	void noteEnd(Poco::UInt64 octet);
	void endDocument();

private:
	void listTable(const std::string& label, DocumentVocabulary::ID id, std::size_t from);
	void listNames(const std::string& label, DocumentVocabulary::ID id, std::size_t from);
	std::string resolve(DocumentVocabulary::ID id, unsigned int index) const;
	void chunk(const std::string& text, unsigned int algorithm);
	void line(Poco::UInt64 offset, int depth, const std::string& text);
	void keep(Poco::UInt64 octet, std::initializer_list<Coding> codings);

	std::ostream&            _out;
	const FastInfosetParser& _settings;
	ItemReader&              _items;
	const BitStreamReader&   _reader;
	DumpSummary              _summary;
	int                      _depth;
	bool                     _inDTD;

	// What the notes told of the item that comes next.
	Poco::UInt64             _octet;
	Coding                   _codings[4];
	NameCoding               _name;
	std::vector<std::pair<Poco::UInt64, std::string>> _details;   // the lines after an element's own
};


DocumentDumper::Listing::Listing(std::ostream& out, const FastInfosetParser& settings, ItemReader& items, const BitStreamReader& reader):
	_out(out),
	_settings(settings),
	_items(items),
	_reader(reader),
	_depth(0),
	_inDTD(false),
	_octet(0)
{
}


inline const DumpSummary& DocumentDumper::Listing::summary() const
{
	return _summary;
}


//
// Header
//
bool DocumentDumper::Listing::loadExternalVocabulary(const std::string& uri, DocumentVocabulary& vocabulary)
{
	_settings.loadExternalVocabulary(uri, vocabulary);
	_out << "      loaded\n";
	return true;
}


void DocumentDumper::Listing::presenceRead(unsigned int bits)
{
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
}


void DocumentDumper::Listing::additionalDataRead()
{
	_out << "  additional data: read and dropped\n";
}


void DocumentDumper::Listing::initialVocabularyStarts()
{
	_out << "  initial vocabulary:\n";
}


void DocumentDumper::Listing::externalVocabularyNamed(const std::string& uri)
{
	_out << "    external vocabulary: " << TextFormat::quoted(uri, 200) << '\n';
}


void DocumentDumper::Listing::listRead(DocumentVocabulary::ID table, std::size_t first)
{
	const DocumentVocabulary& vocabulary = _items.vocabulary();
	switch (table)
	{
	case DocumentVocabulary::RESTRICTED_ALPHABET:
	{
		const std::vector<Ixor::FastInfoset::RestrictedAlphabet>& alphabets = vocabulary.restrictedAlphabets().alphabets();
		_out << "    restricted alphabets: " << alphabets.size() - first << " from index " << first + 1 << ":";
		for (std::size_t i = first; i < alphabets.size(); ++i)
			_out << (i == first ? " " : ", ") << TextFormat::quoted(alphabets[i].characters());
		_out << '\n';
		break;
	}
	case DocumentVocabulary::ENCODING_ALGORITHM:
		_out << "    encoding algorithms: read and dropped (only the built-in ones are known)\n";
		break;
	case DocumentVocabulary::PREFIX:                  listTable("prefixes", table, first); break;
	case DocumentVocabulary::NAMESPACE_NAME:          listTable("namespace names", table, first); break;
	case DocumentVocabulary::LOCAL_NAME:              listTable("local names", table, first); break;
	case DocumentVocabulary::OTHER_NCNAME:            listTable("other NCNames", table, first); break;
	case DocumentVocabulary::OTHER_URI:               listTable("other URIs", table, first); break;
	case DocumentVocabulary::ATTRIBUTE_VALUE:         listTable("attribute values", table, first); break;
	case DocumentVocabulary::CONTENT_CHARACTER_CHUNK: listTable("content character chunks", table, first); break;
	case DocumentVocabulary::OTHER_STRING:            listTable("other strings", table, first); break;
	case DocumentVocabulary::ELEMENT_NAME:            listNames("element names", table, first); break;
	case DocumentVocabulary::ATTRIBUTE_NAME:          listNames("attribute names", table, first); break;
	}
}


void DocumentDumper::Listing::listTable(const std::string& label, DocumentVocabulary::ID id, std::size_t from)
{
	const Vocabulary<std::string>& table = *_items.vocabulary().vocabulary(id);
	_out << "    " << label << ": " << table.size() - from << " from " << entry(id, static_cast<unsigned int>(from)) << ":";
	for (std::size_t i = from; i < table.size() && i < from + LISTED_ENTRIES; ++i)
		_out << (i == from ? " " : ", ") << TextFormat::quoted(table.value(static_cast<unsigned int>(i)), 32);
	if (table.size() > from + LISTED_ENTRIES) _out << ", ... (" << table.size() - from - LISTED_ENTRIES << " more)";
	_out << '\n';
}


void DocumentDumper::Listing::listNames(const std::string& label, DocumentVocabulary::ID id, std::size_t from)
{
	const DocumentVocabulary& vocabulary = _items.vocabulary();
	const Vocabulary<QualifiedNameEntry>& table = id == DocumentVocabulary::ELEMENT_NAME ? *vocabulary.elementVocabulary() : *vocabulary.attributeVocabulary();
	_out << "    " << label << ": " << table.size() - from << " from " << entry(id, static_cast<unsigned int>(from)) << ":";
	for (std::size_t i = from; i < table.size() && i < from + LISTED_ENTRIES; ++i)
	{
		const QualifiedNameEntry& name = table.value(static_cast<unsigned int>(i));
		_out << (i == from ? " " : ", ")
			<< qualifiedName(resolve(DocumentVocabulary::PREFIX, name.prefixId()), resolve(DocumentVocabulary::LOCAL_NAME, name.localNameId()));
	}
	if (table.size() > from + LISTED_ENTRIES) _out << ", ... (" << table.size() - from - LISTED_ENTRIES << " more)";
	_out << '\n';
}


std::string DocumentDumper::Listing::resolve(DocumentVocabulary::ID id, unsigned int index) const
	/// A part of a name of the initial vocabulary. The reader resolves a
	/// name only when a document uses it, so one that names no entry is
	/// shown as such rather than refused.
{
	// Names from an initial vocabulary mark an absent prefix or namespace
	// with all bits set.
	if (index == ABSENT) return std::string();
	const Vocabulary<std::string>& table = *_items.vocabulary().vocabulary(id);
	if (index >= table.size()) return "(no " + entry(id, index) + ")";
	return table.value(index);
}


inline bool DocumentDumper::Listing::inHandler() const
{
	return false;
}


void DocumentDumper::Listing::fatalError(const std::string&)
{
	_out.flush();
}


void DocumentDumper::Listing::xmlDeclaration(const std::string& text)
{
	_out << "Header\n";
	_out << "  pre-header: " << (text.empty() ? std::string("none") : TextFormat::quoted(text, 64)) << '\n';
	_out << "  version: 1\n";
}


void DocumentDumper::Listing::vocabularyRead(const DocumentVocabulary&)
{
}


void DocumentDumper::Listing::noteNotation(Poco::UInt64 octet, const Coding& name, const Coding& systemId, const Coding& publicId)
{
	keep(octet, {name, systemId, publicId});
}


void DocumentDumper::Listing::notation(const std::string& name, const std::string* pPublicId, const std::string* pSystemId)
{
	std::string text = "notation " + name;
	std::string hows = "name " + how(_codings[0]);
	appendPart(text, hows, "system", _codings[1], pSystemId ? *pSystemId : std::string());
	appendPart(text, hows, "public", _codings[2], pPublicId ? *pPublicId : std::string());
	_summary.countDeclaration();
	line(_octet, 1, text + "  " + hows);
}


void DocumentDumper::Listing::noteUnparsedEntity(Poco::UInt64 octet, const Coding& name, const Coding& systemId, const Coding& publicId, const Coding& notationName)
{
	keep(octet, {name, systemId, publicId, notationName});
}


void DocumentDumper::Listing::unparsedEntity(const std::string& name, const std::string* pPublicId, const std::string& systemId, const std::string& notationName)
{
	std::string text = "unparsed entity " + name;
	std::string hows = "name " + how(_codings[0]);
	appendPart(text, hows, "system", _codings[1], systemId);
	appendPart(text, hows, "public", _codings[2], pPublicId ? *pPublicId : std::string());
	text += " notation " + notationName;
	hows += ", notation " + how(_codings[3]);
	_summary.countDeclaration();
	line(_octet, 1, text + "  " + hows);
}


void DocumentDumper::Listing::characterEncodingScheme(const std::string& name)
{
	_out << "  character encoding scheme: " << TextFormat::quoted(name) << " (not reported)\n";
}


void DocumentDumper::Listing::standalone(bool standalone)
{
	_out << "  standalone: " << (standalone ? "yes" : "no") << " (not reported)\n";
}


void DocumentDumper::Listing::version(const std::string& version, const Coding& coding)
{
	_out << "  version: " << TextFormat::quoted(version) << "  " << how(coding) << " (not reported)\n";
}


void DocumentDumper::Listing::startDocument()
{
	_summary.setHeaderBits(ItemReader::bitOffset(_reader));
	_out << "Items (octet offset, item, how it is coded)\n";
}


//
// Elements
//
void DocumentDumper::Listing::noteNamespace(Poco::UInt64 octet, const Coding& prefix, const Coding& uri)
{
	keep(octet, {prefix, uri});
}


void DocumentDumper::Listing::startPrefixMapping(const std::string& prefix, const std::string& uri)
	/// Namespace attributes come before the element's name in the stream;
	/// they are listed after the element's own line, with the attributes.
{
	std::string text = "namespace xmlns";
	std::string hows;
	Poco::UInt64 bits = 0;
	if (_codings[0].form != Coding::ABSENT)
	{
		text += ":" + prefix;
		hows = "  prefix " + how(_codings[0]);
		bits += _codings[0].bits;
	}
	if (_codings[1].form != Coding::ABSENT)
	{
		hows += (hows.empty() ? "  name " : ", name ") + how(_codings[1]);
		bits += _codings[1].bits;
	}
	_summary.addBits(DumpSummary::NAMES, bits);
	_summary.countNamespace();
	_details.push_back(std::make_pair(_octet, text + "=" + TextFormat::quoted(uri, 200) + hows));
}


void DocumentDumper::Listing::noteAttribute(Poco::UInt64 octet, const NameCoding& name, const Coding& value)
	/// The attribute the reader has just added.
{
	const ItemReader::Attribute& attribute = _items.attributes()[_items.attributeCount() - 1];
	const std::string text = attribute.pValue ? *attribute.pValue
		: attribute.pData ? std::string(attribute.pData, attribute.length) : attribute.copy;
	_summary.addBits(DumpSummary::NAMES, name.name.bits);
	_summary.countName(name.name.form == Coding::LITERAL);
	_summary.countAttribute();
	_summary.addBits(DumpSummary::ATTRIBUTE_VALUES, value.bits);
	_summary.countAttributeValue(value.form == Coding::LITERAL);
	_details.push_back(std::make_pair(octet, "attribute " + nameText(*attribute.pName, name) + "=" + TextFormat::quoted(text)
		+ "  name " + how(name) + ", value " + how(value)));
}


void DocumentDumper::Listing::noteElement(Poco::UInt64 octet, const NameCoding& name)
{
	_octet = octet;
	_name = name;
}


void DocumentDumper::Listing::startElement(const ItemReader::NameEntry& element)
{
	_summary.addBits(DumpSummary::NAMES, _name.name.bits);
	_summary.countName(_name.name.form == Coding::LITERAL);
	_summary.countElement();
	line(_octet, _depth, "element " + nameText(element, _name) + "  name " + how(_name));
	for (const std::pair<Poco::UInt64, std::string>& detail: _details) line(detail.first, _depth + 1, detail.second);
	_details.clear();
	++_depth;
}


void DocumentDumper::Listing::endElement(const ItemReader::NameEntry&)
{
	--_depth;
}


void DocumentDumper::Listing::endPrefixMapping(const std::string&)
{
}


//
// Other items
//
void DocumentDumper::Listing::noteChunk(Poco::UInt64 octet, const Coding& value)
{
	keep(octet, {value});
}


void DocumentDumper::Listing::characters(const char* pData, std::size_t length)
{
	chunk(std::string(pData, length), 0);
}


void DocumentDumper::Listing::value(Encoding& value)
{
	const Encoding& text = value;
	const bool algorithm = _codings[0].form == Coding::LITERAL && _codings[0].encoding == DocumentVocabulary::ENCODINGALGORITHM;
	chunk(text.content(), algorithm ? value.type() : 0);
}


void DocumentDumper::Listing::chunk(const std::string& text, unsigned int algorithm)
{
	const Coding& coding = _codings[0];
	const bool typed = algorithm != 0 && algorithm != CDATA_ALGORITHM;
	// The two bits that start a chunk count with it.
	_summary.addBits(typed ? DumpSummary::TYPED_DATA : DumpSummary::CHARACTER_CONTENT, 2 + coding.bits);
	_summary.countChunk(coding.form == Coding::LITERAL, typed);
	std::string kind = "text";
	if (algorithm == CDATA_ALGORITHM) kind = "cdata";
	else if (typed) kind = "data " + algorithmName(algorithm);
	line(_octet, _depth, kind + " " + TextFormat::quoted(text) + "  " + how(coding));
}


void DocumentDumper::Listing::noteComment(Poco::UInt64 octet, const Coding& text)
{
	keep(octet, {text});
}


void DocumentDumper::Listing::comment(const std::string& text)
{
	// The octet that starts a comment counts with it.
	_summary.addBits(DumpSummary::COMMENTS_AND_PIS, 8 + _codings[0].bits);
	_summary.countComment();
	line(_octet, _depth, "comment " + TextFormat::quoted(text) + "  " + how(_codings[0]));
}


void DocumentDumper::Listing::noteProcessingInstruction(Poco::UInt64 octet, const Coding& target, const Coding& data)
{
	keep(octet, {target, data});
}


void DocumentDumper::Listing::processingInstruction(const std::string& target, const std::string& data)
{
	_summary.addBits(DumpSummary::COMMENTS_AND_PIS, 8 + _codings[0].bits + _codings[1].bits);
	_summary.countProcessingInstruction();
	line(_octet, _depth + (_inDTD ? 1 : 0), "pi " + target + " " + TextFormat::quoted(data)
		+ "  target " + how(_codings[0]) + ", data " + how(_codings[1]));
}


void DocumentDumper::Listing::noteDocumentType(Poco::UInt64 octet, const Coding& systemId, const Coding& publicId)
{
	keep(octet, {systemId, publicId});
}


void DocumentDumper::Listing::startDTD(const std::string& publicId, const std::string& systemId)
{
	std::string text = "doctype";
	std::string hows;
	appendPart(text, hows, "system", _codings[0], systemId);
	appendPart(text, hows, "public", _codings[1], publicId);
	_summary.countDeclaration();
	line(_octet, _depth, text + hows);
	_inDTD = true;
}


void DocumentDumper::Listing::endDTD()
{
	_inDTD = false;
}


void DocumentDumper::Listing::entityReference(Poco::UInt64 octet, const std::string& name, const std::string& systemId, const std::string& publicId, const Coding codings[3])
{
	std::string text = "entity reference &" + name + ";";
	std::string hows = "  name " + how(codings[0]);
	appendPart(text, hows, "system", codings[1], systemId);
	appendPart(text, hows, "public", codings[2], publicId);
	_summary.countDeclaration();
	line(octet, _depth, text + hows + " (the parser reports it to nobody)");
}


void DocumentDumper::Listing::noteEnd(Poco::UInt64 octet)
{
	line(octet, 0, "end of document");
}


void DocumentDumper::Listing::endDocument()
{
}


void DocumentDumper::Listing::line(Poco::UInt64 offset, int depth, const std::string& text)
{
	_out << TextFormat::padLeft(NumberFormatter::format(offset), 8) << "  " << std::string(2 * static_cast<std::size_t>(depth), ' ') << text << '\n';
}


void DocumentDumper::Listing::keep(Poco::UInt64 octet, std::initializer_list<Coding> codings)
	/// What a note tells of the item whose event comes next.
{
	_octet = octet;
	std::copy(codings.begin(), codings.end(), _codings);
}


//
// DocumentDumper
//
DocumentDumper::DocumentDumper(std::ostream& out, const FastInfosetParser& settings):
	_out(out),
	_settings(settings),
	_stoppedAt(0)
{
}


DocumentDumper::~DocumentDumper()
{
}


void DocumentDumper::dump(const char* data, std::size_t size)
{
	ItemReader items(DocumentVocabulary::VOC_VECTOR);
	const ItemReader::Limits limits =
	{
		_settings.getMaxElementDepth(), _settings.getMaxNamespaceDeclarations(),
		_settings.getAmplificationThreshold(), _settings.getMaxAmplification()
	};
	items.setLimits(limits);
	BitStreamReader reader(data, size);
	Listing listing(_out, _settings, items, reader);
	_out << "Fast Infoset document, " << size << " octets\n";
	try
	{
		items.read(reader, true, listing, listing);
	}
	catch (...)
	{
		_stoppedAt = std::min<Poco::UInt64>(reader.octetsConsumed(), size);
		_out.flush();
		throw;
	}
	_stoppedAt = reader.octetsConsumed();
	if (_stoppedAt < size) _out << "  (" << size - _stoppedAt << " more octets follow the document and are not read)\n";
	listing.summary().print(_out, size);
	DumpSummary::printVocabulary(_out, items.vocabulary());
}


Poco::UInt64 DocumentDumper::offset() const
{
	return _stoppedAt;
}


} // namespace Fitool

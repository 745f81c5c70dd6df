#include "Ixor/FastInfoset/VocabularyBuilder.h"
#include "Ixor/FastInfoset/QualifiedNameEntry.h"
#include "Ixor/FastInfoset/Vocabulary.h"
#include "Poco/FileStream.h"
#include "Poco/SAX/Attributes.h"
#include "Poco/SAX/InputSource.h"
#include "TextJoiner.h"
#include "Poco/SAX/SAXParser.h"
#include "Poco/XML/Name.h"
#include <algorithm>
#include <cstring>
#include <vector>


using Ixor::XML::Attributes;
using Ixor::XML::XMLChar;
using Ixor::XML::XMLReader;
using Ixor::XML::XMLString;


namespace Ixor {
namespace FastInfoset {


namespace
{
	typedef DocumentVocabulary DV;

	const char NAME_SEPARATOR = '\0';   // between the parts of a name's key; no name holds it

	struct Candidate
	{
		const std::string* pValue;
		UInt64             occurrences;
		std::size_t        samples;
	};

	bool moreUsed(const Candidate& a, const Candidate& b)
	{
		if (a.occurrences != b.occurrences) return a.occurrences > b.occurrences;
		return *a.pValue < *b.pValue;
	}

	bool savesMore(const Candidate& a, const Candidate& b)
		/// A string saves its length once in each document it appears in.
	{
		const UInt64 savedA = UInt64(a.samples) * a.pValue->size();
		const UInt64 savedB = UInt64(b.samples) * b.pValue->size();
		if (savedA != savedB) return savedA > savedB;
		return moreUsed(a, b);
	}

	template <class Uses>
	std::vector<Candidate> candidates(const Uses& uses)
	{
		std::vector<Candidate> result;
		result.reserve(uses.size());
		for (const auto& use: uses) result.push_back(Candidate{&use.first, use.second.occurrences, use.second.samples});
		return result;
	}

	template <class Uses>
	std::vector<Candidate> mostUsed(const Uses& uses)
	{
		std::vector<Candidate> result = candidates(uses);
		std::sort(result.begin(), result.end(), moreUsed);
		return result;
	}

	template <class Uses>
	std::vector<Candidate> savingMost(const Uses& uses, std::size_t count)
		/// The count candidates that save most, the most used first.
	{
		std::vector<Candidate> result = candidates(uses);
		if (result.size() > count)
		{
			std::partial_sort(result.begin(), result.begin() + static_cast<std::ptrdiff_t>(count), result.end(), savesMore);
			result.resize(count);
		}
		std::sort(result.begin(), result.end(), moreUsed);
		return result;
	}

	std::size_t indentationDepth(const std::string& chunk, char& unit)
		/// The number of spaces or tabs after a chunk's line end, when the
		/// chunk is a line end and nothing but spaces or nothing but tabs
		/// (unit tells which); 0 otherwise.
	{
		const std::size_t start = chunk.compare(0, 2, "\r\n") == 0 ? 2 : 1;
		if (chunk.size() <= start || (chunk[0] != '\n' && start == 1)) return 0;
		unit = chunk[start];
		if (unit != ' ' && unit != '\t') return 0;
		if (chunk.find_first_not_of(unit, start) != std::string::npos) return 0;
		return chunk.size() - start;
	}

	void addDeeperIndentation(const std::vector<Candidate>& chunks, std::size_t maxLength, std::size_t maxChunks, DocumentVocabulary& result)
		/// Documents of one kind are indented alike, but a document may nest
		/// deeper than any sample did: where the samples' text between tags is
		/// indented by a constant step, the indentation of the next depths goes
		/// in after everything else, up to twice the deepest and the longest
		/// string taken, while there is room among the chunks.
	{
		std::string deepest;
		std::size_t depth = 0;
		std::size_t step = 0;
		std::size_t previous = 0;
		std::vector<std::size_t> depths;
		char unit = 0;
		for (const Candidate& c: chunks)
		{
			char chunkUnit = 0;
			const std::size_t d = indentationDepth(*c.pValue, chunkUnit);
			if (d == 0) continue;
			if (unit != 0 && chunkUnit != unit) return;   // mixed indentation: no step to follow
			unit = chunkUnit;
			depths.push_back(d);
			if (d > depth)
			{
				depth = d;
				deepest = *c.pValue;
			}
		}
		if (depths.size() < 2) return;
		std::sort(depths.begin(), depths.end());
		for (std::size_t d: depths)
		{
			if (previous != 0 && d != previous && (step == 0 || d - previous < step)) step = d - previous;
			previous = d;
		}
		if (step == 0) return;
		// As deep again as the samples went, so that a vocabulary does not
		// grow by long runs that documents of its kind hardly reach.
		const std::size_t longest = std::min(maxLength, deepest.size() + depth);
		bool found = false;
		std::size_t count = chunks.size();
		for (deepest.append(step, unit); deepest.size() <= longest && count < maxChunks; deepest.append(step, unit), ++count)
		{
			result.index(DV::CONTENT_CHARACTER_CHUNK, deepest, found);
		}
	}

	void splitName(const std::string& key, std::string parts[3])
	{
		const std::size_t first = key.find(NAME_SEPARATOR);
		const std::size_t second = key.find(NAME_SEPARATOR, first + 1);
		parts[0].assign(key, 0, first);
		parts[1].assign(key, first + 1, second - first - 1);
		parts[2].assign(key, second + 1, std::string::npos);
	}
}


const std::size_t VocabularyBuilder::DEFAULT_MAX_ATTRIBUTE_VALUES;
const std::size_t VocabularyBuilder::DEFAULT_MAX_CHARACTER_CHUNKS;
const std::size_t VocabularyBuilder::DEFAULT_MAX_STRING_LENGTH;


VocabularyBuilder::VocabularyBuilder():
	_samples(0),
	_maxAttributeValues(DEFAULT_MAX_ATTRIBUTE_VALUES),
	_maxCharacterChunks(DEFAULT_MAX_CHARACTER_CHUNKS),
	_maxStringLength(DEFAULT_MAX_STRING_LENGTH)
{
}


VocabularyBuilder::~VocabularyBuilder()
{
}


void VocabularyBuilder::setMaxAttributeValues(std::size_t count)
{
	_maxAttributeValues = count;
}


std::size_t VocabularyBuilder::getMaxAttributeValues() const
{
	return _maxAttributeValues;
}


void VocabularyBuilder::setMaxCharacterChunks(std::size_t count)
{
	_maxCharacterChunks = count;
}


std::size_t VocabularyBuilder::getMaxCharacterChunks() const
{
	return _maxCharacterChunks;
}


void VocabularyBuilder::setMaxStringLength(std::size_t length)
{
	_maxStringLength = length;
}


std::size_t VocabularyBuilder::getMaxStringLength() const
{
	return _maxStringLength;
}


void VocabularyBuilder::addXML(std::istream& xml)
{
	Ixor::XML::SAXParser parser;
	parser.setFeature(XMLReader::FEATURE_NAMESPACES, true);
	parser.setFeature(XMLReader::FEATURE_NAMESPACE_PREFIXES, true);
	// The writer's documents hold the text between two tags as one chunk.
	TextJoiner joiner(*this, 0, 0);
	parser.setContentHandler(&joiner);
	Ixor::XML::InputSource source(xml);
	parser.parse(&source);
}


void VocabularyBuilder::addXMLFile(const std::string& path)
{
	Poco::FileInputStream in(path, std::ios::in | std::ios::binary);
	addXML(in);
}


std::size_t VocabularyBuilder::sampleCount() const
{
	return _samples;
}


DocumentVocabulary VocabularyBuilder::vocabulary(const std::string& uri, DocumentVocabulary::VocabularyImpl impl) const
{
	DocumentVocabulary result(uri, impl);
	bool found = false;
	for (DV::ID id: {DV::PREFIX, DV::NAMESPACE_NAME, DV::LOCAL_NAME, DV::OTHER_NCNAME})
	{
		// "xml" and its namespace name are there from the start.
		for (const Candidate& c: mostUsed(_strings[id]))
		{
			if (result.exists(id, *c.pValue, found) == Vocabulary<std::string>::NOT_FOUND) result.index(id, *c.pValue, found);
		}
	}
	for (const Candidate& c: savingMost(_strings[DV::ATTRIBUTE_VALUE], _maxAttributeValues))
	{
		result.index(DV::ATTRIBUTE_VALUE, *c.pValue, found);
	}
	const std::vector<Candidate> chunks = savingMost(_strings[DV::CONTENT_CHARACTER_CHUNK], _maxCharacterChunks);
	for (const Candidate& c: chunks) result.index(DV::CONTENT_CHARACTER_CHUNK, *c.pValue, found);
	addDeeperIndentation(chunks, _maxStringLength, _maxCharacterChunks, result);
	std::string parts[3];
	for (DV::ID id: {DV::ELEMENT_NAME, DV::ATTRIBUTE_NAME})
	{
		Vocabulary<QualifiedNameEntry>& names = id == DV::ELEMENT_NAME ? *result.elementVocabulary() : *result.attributeVocabulary();
		for (const Candidate& c: mostUsed(_strings[id]))
		{
			splitName(*c.pValue, parts);
			// Every part was counted with the name; an absent part is index 0.
			const unsigned int prefix = parts[0].empty() ? 0 : result.exists(DV::PREFIX, parts[0], found);
			const unsigned int uri = parts[1].empty() ? 0 : result.exists(DV::NAMESPACE_NAME, parts[1], found);
			names.index(QualifiedNameEntry(prefix, uri, result.exists(DV::LOCAL_NAME, parts[2], found)), found);
		}
	}
	return result;
}


//
// ContentHandler
//
void VocabularyBuilder::setDocumentLocator(const Ixor::XML::Locator*)
{
}


void VocabularyBuilder::startDocument()
{
	++_samples;
	_prefixOfURI.clear();
}


void VocabularyBuilder::endDocument()
{
}


void VocabularyBuilder::startElement(const XMLString& uri, const XMLString& localName, const XMLString& qname, const Attributes& attributes)
{
	// A parser without namespace processing gives the qualified name only,
	// and the writer takes it whole as the local name.
	Ixor::XML::Name::split(qname, _prefix, _localName);
	countName(_strings[DV::ELEMENT_NAME], uri.empty() ? std::string() : _prefix, uri, localName.empty() ? qname : localName);
	for (int i = 0, count = attributes.getLength(); i < count; ++i)
	{
		const XMLString& attributeURI = attributes.getURI(i);
		const XMLString& attributeLocal = attributes.getLocalName(i);
		Ixor::XML::Name::split(attributes.getQName(i), _prefix, _localName);
		if (!attributeURI.empty() && _prefix.empty())
		{
			// A Fast Infoset parser gives no qualified name: the prefix the
			// writer picks is one declared for the namespace.
			auto it = _prefixOfURI.find(attributeURI);
			if (it != _prefixOfURI.end()) _prefix = it->second;
		}
		countName(_strings[DV::ATTRIBUTE_NAME], attributeURI.empty() ? std::string() : _prefix, attributeURI,
			attributeLocal.empty() ? attributes.getQName(i) : attributeLocal);
		const XMLString& value = attributes.getValue(i);
		countString(_strings[DV::ATTRIBUTE_VALUE], value.data(), value.size());
	}
}


void VocabularyBuilder::endElement(const XMLString&, const XMLString&, const XMLString&)
{
}


void VocabularyBuilder::characters(const XMLChar ch[], int start, int length)
{
	if (length <= 0) return;
	const char* pText = ch + start;
	std::size_t size = static_cast<std::size_t>(length);
	if (const void* pZero = std::memchr(pText, 0, size)) size = static_cast<std::size_t>(static_cast<const char*>(pZero) - pText);
	countString(_strings[DV::CONTENT_CHARACTER_CHUNK], pText, size);
}


void VocabularyBuilder::ignorableWhitespace(const XMLChar ch[], int start, int length)
{
	characters(ch, start, length);
}


void VocabularyBuilder::processingInstruction(const XMLString& target, const XMLString&)
{
	if (!target.empty()) count(_strings[DV::OTHER_NCNAME], target);
}


void VocabularyBuilder::startPrefixMapping(const XMLString& prefix, const XMLString& uri)
{
	if (!prefix.empty()) count(_strings[DV::PREFIX], prefix);
	if (!uri.empty())
	{
		count(_strings[DV::NAMESPACE_NAME], uri);
		_prefixOfURI[uri] = prefix;
	}
}


void VocabularyBuilder::endPrefixMapping(const XMLString&)
{
}


void VocabularyBuilder::skippedEntity(const XMLString&)
{
}


//
// Counting
//
void VocabularyBuilder::count(Uses& uses, const std::string& value)
{
	Use& use = uses[value];
	++use.occurrences;
	if (use.lastSample != _samples)
	{
		use.lastSample = _samples;
		++use.samples;
	}
}


void VocabularyBuilder::countName(Uses& names, const std::string& prefix, const std::string& uri, const std::string& localName)
{
	if (localName.empty()) return;
	if (!prefix.empty()) count(_strings[DV::PREFIX], prefix);
	if (!uri.empty()) count(_strings[DV::NAMESPACE_NAME], uri);
	count(_strings[DV::LOCAL_NAME], localName);
	_key.assign(prefix).append(1, NAME_SEPARATOR).append(uri).append(1, NAME_SEPARATOR).append(localName);
	count(names, _key);
}


void VocabularyBuilder::countString(Uses& strings, const char* text, std::size_t length)
{
	// The empty string is every table's entry 0; long ones are never
	// looked up.
	if (length == 0 || length > _maxStringLength) return;
	_key.assign(text, length);
	count(strings, _key);
}


} } // namespace Ixor::FastInfoset

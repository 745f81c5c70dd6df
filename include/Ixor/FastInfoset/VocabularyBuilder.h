//
// VocabularyBuilder.h
//
// Library: FastInfoset
// Module:  VocabularyBuilder
//


#ifndef FastInfoset_VocabularyBuilder_INCLUDED
#define FastInfoset_VocabularyBuilder_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/DocumentVocabulary.h"
#include "Poco/SAX/ContentHandler.h"
#include <cstddef>
#include <iosfwd>
#include <map>
#include <string>
#include <unordered_map>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API VocabularyBuilder: public Ixor::XML::ContentHandler
	/// Makes a vocabulary from the SAX events of sample documents, for
	/// documents of the same kind to name as their external vocabulary.
	///
	/// Every name of the samples goes in: element and attribute names,
	/// their prefixes, namespace names and local names, and the targets of
	/// processing instructions. Of the attribute values and character chunks
	/// of at most getMaxStringLength() octets, those that save most go in,
	/// at most getMaxAttributeValues() and getMaxCharacterChunks() of them.
	/// A string saves its length once in every document it appears in (a
	/// document writes its repeats as indexes anyway), so the candidates are
	/// ranked by the number of samples they appear in times their length.
	/// Where the samples' text between tags is a line end indented by a
	/// constant step, the indentation of the next depths follows, up to
	/// twice the samples' deepest (within the limits on chunks and length):
	/// documents of one kind are indented alike but may nest deeper.
	///
	/// Within each table the entries are ordered by how often the samples
	/// use them, the most used first, since small indexes are written in
	/// fewer bits; ties go by value, so the vocabulary does not depend on
	/// the order of the samples.
	///
	/// Feed it like a writer: as the content handler of an XML parser with
	/// namespaces and namespace prefixes on (addXML() does that), or of a
	/// FastInfosetParser. Each startDocument() starts a sample.
{
public:
	static const std::size_t DEFAULT_MAX_ATTRIBUTE_VALUES = 1024;
	static const std::size_t DEFAULT_MAX_CHARACTER_CHUNKS = 256;
	static const std::size_t DEFAULT_MAX_STRING_LENGTH = 64;
		/// With a few samples every candidate fits; the limits keep the
		/// vocabulary of many samples small enough that its indexes take at
		/// most two octets, and strings of up to 64 octets take namespace
		/// names, URIs and most type names.

	VocabularyBuilder();
	~VocabularyBuilder();

	void setMaxAttributeValues(std::size_t count);
	std::size_t getMaxAttributeValues() const;
		/// The most attribute values the vocabulary takes (default 1024).

	void setMaxCharacterChunks(std::size_t count);
	std::size_t getMaxCharacterChunks() const;
		/// The most character chunks the vocabulary takes (default 256).

	void setMaxStringLength(std::size_t length);
	std::size_t getMaxStringLength() const;
		/// The longest attribute value or character chunk, in octets, that
		/// the vocabulary takes (default 64). A writer looks up strings of
		/// at most its indexed length only;
		/// FastInfosetWriter::setExternalVocabulary() raises that length to
		/// the vocabulary's longest string.

	void addXML(std::istream& xml);
		/// Reads one sample as XML text through the host's SAXParser, with
		/// namespaces and namespace prefixes on. Throws the parser's
		/// exceptions (Ixor::XML::SAXParseException for text that is not
		/// well-formed); what was read of the sample is kept.

	void addXMLFile(const std::string& path);
		/// The same from a file; a missing file raises
		/// Ixor::FileNotFoundException.

	std::size_t sampleCount() const;
		/// The samples begun so far.

	DocumentVocabulary vocabulary(const std::string& uri, DocumentVocabulary::VocabularyImpl impl = DocumentVocabulary::VOC_MAP) const;
		/// The vocabulary of what the samples gave so far, known by uri, with
		/// tables of the kind impl: map tables grow without limit; hash
		/// tables raise Ixor::PoolOverflowException "Vocabulary hash table
		/// full" for more entries than their capacity; vector tables suit a
		/// parser only.

	// ContentHandler
	void setDocumentLocator(const Ixor::XML::Locator* pLocator);
	void startDocument();
	void endDocument();
	void startElement(const Ixor::XML::XMLString& uri, const Ixor::XML::XMLString& localName, const Ixor::XML::XMLString& qname, const Ixor::XML::Attributes& attributes);
	void endElement(const Ixor::XML::XMLString& uri, const Ixor::XML::XMLString& localName, const Ixor::XML::XMLString& qname);
	void characters(const Ixor::XML::XMLChar ch[], int start, int length);
		/// The text ends at the first zero octet of ch[start, start + length),
		/// as the writer's does.
	void ignorableWhitespace(const Ixor::XML::XMLChar ch[], int start, int length);
	void processingInstruction(const Ixor::XML::XMLString& target, const Ixor::XML::XMLString& data);
	void startPrefixMapping(const Ixor::XML::XMLString& prefix, const Ixor::XML::XMLString& uri);
	void endPrefixMapping(const Ixor::XML::XMLString& prefix);
	void skippedEntity(const Ixor::XML::XMLString& name);

private:
	VocabularyBuilder(const VocabularyBuilder&);
	VocabularyBuilder& operator = (const VocabularyBuilder&);

	struct Use
		/// How often the samples use one string or name.
	{
		UInt64      occurrences = 0;
		std::size_t samples = 0;       // how many samples use it
		std::size_t lastSample = 0;    // the last sample that did, from 1
	};

	typedef std::unordered_map<std::string, Use> Uses;

	void count(Uses& uses, const std::string& value);
	void countName(Uses& names, const std::string& prefix, const std::string& uri, const std::string& localName);
	void countString(Uses& strings, const char* text, std::size_t length);

	Uses                               _strings[DocumentVocabulary::ATTRIBUTE_NAME + 1];   // by table
	std::map<std::string, std::string> _prefixOfURI;     // the last prefix declared for each namespace name
	std::string                        _prefix;
	std::string                        _localName;
	std::string                        _key;
	std::size_t                        _samples;
	std::size_t                        _maxAttributeValues;
	std::size_t                        _maxCharacterChunks;
	std::size_t                        _maxStringLength;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_VocabularyBuilder_INCLUDED

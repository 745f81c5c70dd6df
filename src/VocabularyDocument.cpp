#include "Ixor/FastInfoset/VocabularyDocument.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include "Ixor/FastInfoset/FISException.h"
#include "Poco/FileStream.h"
#include "Poco/SAX/DefaultHandler.h"
#include "Poco/SAX/InputSource.h"
#include "Poco/SAX/LexicalHandler.h"
#include <istream>
#include <ostream>


using Ixor::XML::Attributes;
using Ixor::XML::XMLChar;
using Ixor::XML::XMLString;


namespace Ixor {
namespace FastInfoset {


const std::string VocabularyDocument::URI_COMMENT("vocabulary ");


namespace
{
	typedef DocumentVocabulary DV;

	const unsigned int ABSENT = 0xFFFFFFFF;

	QualifiedNameEntry asWritten(const QualifiedNameEntry& name)
		/// The name with absent parts as index 0.
	{
		return QualifiedNameEntry(name.prefixId() == ABSENT ? 0 : name.prefixId(),
			name.namespaceId() == ABSENT ? 0 : name.namespaceId(), name.localNameId());
	}

	template <class T, class Normal>
	void append(const Vocabulary<T>& source, Vocabulary<T>& target, Normal normal)
		/// Copies the entries of source that target lacks by count, in order.
	{
		bool found = false;
		for (std::size_t i = target.size(); i < source.size(); ++i)
		{
			const T value = normal(source.value(static_cast<unsigned int>(i)));
			target.index(value, found);
			// A map or hash table finds the value again instead of adding it,
			// and every later index would be off by one.
			if (found) throw FISException("Vocabulary table holds a value twice");
		}
	}

	void copyEntries(const DocumentVocabulary& source, DocumentVocabulary& target)
		/// Target is fresh; source holds a fresh vocabulary's entries first.
	{
		auto same = [](const std::string& value) -> const std::string& { return value; };
		for (int id = DV::PREFIX; id <= DV::CONTENT_CHARACTER_CHUNK; ++id)
		{
			append(*source.vocabulary(static_cast<DV::ID>(id)), *target.vocabulary(static_cast<DV::ID>(id)), same);
		}
		append(*source.elementVocabulary(), *target.elementVocabulary(), asWritten);
		append(*source.attributeVocabulary(), *target.attributeVocabulary(), asWritten);
		target.restrictedAlphabets() = source.restrictedAlphabets();
	}

	template <class T, class Normal>
	bool tableStartsWith(const Vocabulary<T>& table, const Vocabulary<T>& base, Normal normal)
	{
		if (table.size() < base.size()) return false;
		for (std::size_t i = 0; i < base.size(); ++i)
		{
			if (!(normal(table.value(static_cast<unsigned int>(i))) == normal(base.value(static_cast<unsigned int>(i))))) return false;
		}
		return true;
	}

	class URIComment: public Ixor::XML::DefaultHandler, public Ixor::XML::LexicalHandler
		/// Takes the URI from the first comment of the form "vocabulary URI"
		/// before the root element; receives the rest and does nothing.
	{
	public:
		URIComment():
			_inProlog(true),
			_found(false)
		{
		}

		const std::string& uri() const
		{
			return _uri;
		}

		void startElement(const XMLString&, const XMLString&, const XMLString&, const Attributes&)
		{
			_inProlog = false;
		}

		void comment(const XMLChar ch[], int start, int length)
		{
			if (!_inProlog || _found || length <= 0) return;
			const std::string text(ch + start, static_cast<std::size_t>(length));
			if (text.compare(0, VocabularyDocument::URI_COMMENT.size(), VocabularyDocument::URI_COMMENT) != 0) return;
			_uri = text.substr(VocabularyDocument::URI_COMMENT.size());
			_found = true;
		}

		void startDTD(const XMLString&, const XMLString&, const XMLString&) {}
		void endDTD() {}
		void startEntity(const XMLString&) {}
		void endEntity(const XMLString&) {}
		void startCDATA() {}
		void endCDATA() {}

	private:
		bool        _inProlog;
		bool        _found;
		std::string _uri;
	};
}


void VocabularyDocument::save(const DocumentVocabulary& vocabulary, std::ostream& out)
{
	// The writer takes map and hash tables only.
	const DocumentVocabulary writable = vocabulary.impl() == DV::VOC_VECTOR ? withTables(vocabulary, DV::VOC_MAP) : vocabulary;
	FastInfosetWriter writer(out, false, writable);
	// Neither the comment nor anything else of the document enters a table:
	// strings go out in full, and the root's name is an index.
	writer.setMaxIndexedStringLength(-1);
	writer.startDocument();
	if (!vocabulary.getURI().empty())
	{
		const std::string text = URI_COMMENT + vocabulary.getURI();
		writer.comment(text.data(), 0, static_cast<int>(text.size()));
	}
	const Vocabulary<QualifiedNameEntry>& elements = *writable.elementVocabulary();
	const QualifiedNameEntry root = elements.size() > 1 ? asWritten(elements.value(1)) : QualifiedNameEntry();
	// A name that the writer could not find again (a prefix without
	// namespace, parts the tables lack) would enter the tables in full.
	const bool hasRoot = root.localNameId() != 0 && root.localNameId() < writable.vocabulary(DV::LOCAL_NAME)->size()
		&& root.prefixId() < writable.vocabulary(DV::PREFIX)->size()
		&& root.namespaceId() < writable.vocabulary(DV::NAMESPACE_NAME)->size()
		&& (root.prefixId() == 0 || root.namespaceId() != 0);
	if (hasRoot)
	{
		const std::string& prefix = writable.value(DV::PREFIX, root.prefixId());
		const std::string& uri = writable.value(DV::NAMESPACE_NAME, root.namespaceId());
		const std::string& localName = writable.value(DV::LOCAL_NAME, root.localNameId());
		// Declared as the name has it, so that no prefix is made up.
		if (!uri.empty() && prefix != "xml") writer.startPrefixMapping(prefix, uri);
		writer.emptyElement(uri, localName, prefix.empty() ? localName : prefix + ":" + localName);
		if (!uri.empty() && prefix != "xml") writer.endPrefixMapping(prefix);
	}
	writer.endDocument();
}


void VocabularyDocument::save(const DocumentVocabulary& vocabulary, const std::string& path)
{
	Poco::FileOutputStream out(path, std::ios::out | std::ios::trunc | std::ios::binary);
	save(vocabulary, out);
	out.close();
}


DocumentVocabulary VocabularyDocument::load(std::istream& in, DocumentVocabulary::VocabularyImpl impl)
{
	// Vector tables read every document as it was written; the result is
	// copied into the kind asked for.
	FastInfosetParser parser(DV::VOC_VECTOR);
	parser.setLoadExternalVocabularies(false);
	URIComment handler;
	parser.setContentHandler(&handler);
	parser.setProperty(Ixor::XML::XMLReader::PROPERTY_LEXICAL_HANDLER, static_cast<Ixor::XML::LexicalHandler*>(&handler));
	Ixor::XML::InputSource source(in);
	parser.parse(&source);
	DocumentVocabulary result(handler.uri(), impl);
	copyEntries(parser.vocabulary(), result);
	return result;
}


DocumentVocabulary VocabularyDocument::load(const std::string& path, DocumentVocabulary::VocabularyImpl impl)
{
	Poco::FileInputStream in(path, std::ios::in | std::ios::binary);
	return load(in, impl);
}


DocumentVocabulary VocabularyDocument::withTables(const DocumentVocabulary& vocabulary, DocumentVocabulary::VocabularyImpl impl)
{
	DocumentVocabulary result(vocabulary.getURI(), impl);
	copyEntries(vocabulary, result);
	return result;
}


bool VocabularyDocument::startsWith(const DocumentVocabulary& vocabulary, const DocumentVocabulary& base)
{
	auto same = [](const std::string& value) -> const std::string& { return value; };
	for (int id = DV::PREFIX; id <= DV::CONTENT_CHARACTER_CHUNK; ++id)
	{
		if (!tableStartsWith(*vocabulary.vocabulary(static_cast<DV::ID>(id)), *base.vocabulary(static_cast<DV::ID>(id)), same)) return false;
	}
	if (!tableStartsWith(*vocabulary.elementVocabulary(), *base.elementVocabulary(), asWritten)) return false;
	if (!tableStartsWith(*vocabulary.attributeVocabulary(), *base.attributeVocabulary(), asWritten)) return false;
	const std::vector<RestrictedAlphabet>& alphabets = vocabulary.restrictedAlphabets().alphabets();
	const std::vector<RestrictedAlphabet>& baseAlphabets = base.restrictedAlphabets().alphabets();
	if (alphabets.size() < baseAlphabets.size()) return false;
	for (std::size_t i = 0; i < baseAlphabets.size(); ++i)
	{
		if (alphabets[i].characters() != baseAlphabets[i].characters()) return false;
	}
	return true;
}


} } // namespace Ixor::FastInfoset

#include "HeaderWriter.h"
#include "Ixor/FastInfoset/Encoder.h"
#include "Ixor/FastInfoset/VerbTable.h"
#include <array>
#include <memory>


namespace Ixor {
namespace FastInfoset {


namespace
{
	typedef std::array<std::size_t, 3 + DocumentVocabulary::CONTENT_CHARACTER_CHUNK - DocumentVocabulary::PREFIX + 1> Sizes;

	Sizes sizesOf(const DocumentVocabulary& vocabulary)
		/// The number of alphabets and of the entries of every table.
	{
		Sizes sizes = {vocabulary.restrictedAlphabets().alphabets().size(),
			vocabulary.elementVocabulary()->size(), vocabulary.attributeVocabulary()->size()};
		for (int id = DocumentVocabulary::PREFIX; id <= DocumentVocabulary::CONTENT_CHARACTER_CHUNK; ++id)
			sizes[3 + id - DocumentVocabulary::PREFIX] = vocabulary.vocabulary(static_cast<DocumentVocabulary::ID>(id))->size();
		return sizes;
	}

	bool holdsNoMoreThanAFreshOne(const DocumentVocabulary& vocabulary)
		/// Whether vocabulary holds no more than a fresh one (tables only
		/// grow, and what they hold first is what a fresh one holds), told
		/// without building a fresh vocabulary: the common case of every
		/// document.
	{
		static const Sizes FRESH = sizesOf(DocumentVocabulary(DocumentVocabulary::VOC_MAP));
		const Sizes sizes = sizesOf(vocabulary);
		for (std::size_t i = 0; i < sizes.size(); ++i)
		{
			if (sizes[i] > FRESH[i]) return false;
		}
		return true;
	}
}


HeaderWriter::HeaderWriter(BitStreamWriter& writer, ItemWriter& items):
	_writer(writer),
	_items(items)
{
}


void HeaderWriter::write(bool xmlDeclaration, const DocumentVocabulary& vocabulary, const std::string& externalURI, const DocumentVocabulary& external, const DeferredProlog& prolog)
{
	Encoder::documentPreHeader(_writer, xmlDeclaration);
	poco_assert(_writer.bitPos() == 1);

	const bool hasAdditionalData = false;
	const bool hasCharacterEncodingScheme = false;
	const bool standalone = false;
	const bool hasVersion = false;
	poco_assert(!hasAdditionalData);
	poco_assert(!hasCharacterEncodingScheme);
	poco_assert(!standalone);
	poco_assert(!hasVersion);

	const bool hasNotations = !prolog.notations().empty();
	const bool hasUnparsedEntities = !prolog.unparsedEntities().empty();
	const bool hasExternalVocabulary = !externalURI.empty();
	// Without an external vocabulary the difference to a fresh vocabulary
	// is what the application added beforehand. The fresh one is built with
	// map tables: the difference is the same and costs no hash slots.
	std::unique_ptr<DocumentVocabulary> pInitial;
	if (hasExternalVocabulary) pInitial.reset(new DocumentVocabulary(vocabulary - external));
	else if (!holdsNoMoreThanAFreshOne(vocabulary)) pInitial.reset(new DocumentVocabulary(vocabulary - DocumentVocabulary(DocumentVocabulary::VOC_MAP)));
	bool hasInitialVocabulary = hasExternalVocabulary || (pInitial && (!pInitial->restrictedAlphabets().alphabets().empty()
		|| !pInitial->elementVocabulary()->empty() || !pInitial->attributeVocabulary()->empty()));
	for (int id = DocumentVocabulary::PREFIX; id <= DocumentVocabulary::CONTENT_CHARACTER_CHUNK && pInitial && !hasInitialVocabulary; ++id)
	{
		hasInitialVocabulary = !pInitial->vocabulary(static_cast<DocumentVocabulary::ID>(id))->empty();
	}

	_writer.write(hasAdditionalData);
	_writer.write(hasInitialVocabulary);
	_writer.write(hasNotations);
	_writer.write(hasUnparsedEntities);
	_writer.write(hasCharacterEncodingScheme);
	_writer.write(standalone);
	_writer.write(hasVersion);

	if (hasInitialVocabulary) writeInitialVocabulary(*pInitial, externalURI);
	writeDeclarations(prolog);
}


void HeaderWriter::writeInitialVocabulary(const DocumentVocabulary& vocabulary, const std::string& externalURI)
{
	typedef DocumentVocabulary DV;
	const DV::ID stringTables[] = {DV::PREFIX, DV::NAMESPACE_NAME, DV::LOCAL_NAME, DV::OTHER_NCNAME, DV::OTHER_URI};
	const DV::ID encodedTables[] = {DV::ATTRIBUTE_VALUE, DV::CONTENT_CHARACTER_CHUNK, DV::OTHER_STRING};

	const bool hasExternal = !externalURI.empty();
	const bool hasAlphabets = !vocabulary.restrictedAlphabets().alphabets().empty();
	_writer.write(0u, 3);
	_writer.write(hasExternal);
	_writer.write(hasAlphabets);
	_writer.write(false);                          // encoding algorithms are never written
	for (DV::ID id: stringTables) _writer.write(!vocabulary.vocabulary(id)->empty());
	for (DV::ID id: encodedTables) _writer.write(!vocabulary.vocabulary(id)->empty());
	_writer.write(!vocabulary.elementVocabulary()->empty());
	_writer.write(!vocabulary.attributeVocabulary()->empty());

	if (hasExternal)
	{
		_writer.write(false);
		Encoder::nonEmptyOctetString(_writer, externalURI);
	}
	if (hasAlphabets) writeRestrictedAlphabets(vocabulary.restrictedAlphabets());
	// An identifying string after one padding bit; an encoded string in
	// UTF-8 after two padding bits and the selector.
	for (DV::ID id: stringTables)
	{
		if (!vocabulary.vocabulary(id)->empty()) writeStrings(*vocabulary.vocabulary(id), 0, 1);
	}
	for (DV::ID id: encodedTables)
	{
		if (!vocabulary.vocabulary(id)->empty()) writeStrings(*vocabulary.vocabulary(id), DocumentVocabulary::UTF8, 4);
	}
	if (!vocabulary.elementVocabulary()->empty()) writeNameSurrogates(*vocabulary.elementVocabulary());
	if (!vocabulary.attributeVocabulary()->empty()) writeNameSurrogates(*vocabulary.attributeVocabulary());
}


void HeaderWriter::writeRestrictedAlphabets(const DocumentRestrictedAlphabet& alphabets)
{
	const unsigned int numEntries = static_cast<unsigned int>(alphabets.alphabets().size());
	poco_assert(numEntries > 0);
	Encoder::lengthOfSequence(_writer, numEntries);
	for (const RestrictedAlphabet& alphabet: alphabets.alphabets())
	{
		_writer.write(false);
		Encoder::nonEmptyOctetString(_writer, alphabet.characters());
	}
}


void HeaderWriter::writeStrings(const Vocabulary<std::string>& voc, unsigned int lead, int leadSize)
	/// Each entry in full after the leadSize bits lead.
{
	const VerbTable<std::string>& index = voc.index();
	const unsigned int numEntries = static_cast<unsigned int>(voc.size());
	poco_assert(voc.size() == index.size());
	poco_assert(numEntries > 0);
	Encoder::lengthOfSequence(_writer, numEntries);
	for (std::size_t i = 0; i < index.size(); ++i)
	{
		_writer.write(lead, leadSize);
		Encoder::nonEmptyOctetString(_writer, index[i]);
	}
}


void HeaderWriter::writeNameSurrogates(const Vocabulary<QualifiedNameEntry>& voc)
	/// Each entry as its indexes into the prefix, namespace-name and
	/// local-name tables, after six padding bits. Index 0, and the all-ones
	/// index that a reader gives an absent part, mean no prefix or no
	/// namespace.
{
	const VerbTable<QualifiedNameEntry>& index = voc.index();
	const unsigned int numEntries = static_cast<unsigned int>(voc.size());
	poco_assert(voc.size() == index.size());
	poco_assert(numEntries > 0);
	Encoder::lengthOfSequence(_writer, numEntries);
	const unsigned int ABSENT = 0xFFFFFFFF;
	for (std::size_t i = 0; i < index.size(); ++i)
	{
		const QualifiedNameEntry& name = index[i];
		const bool hasPrefix = name.prefixId() != 0 && name.prefixId() != ABSENT;
		const bool hasNamespace = name.namespaceId() != 0 && name.namespaceId() != ABSENT;
		_writer.write((hasPrefix ? 2u : 0u) | (hasNamespace ? 1u : 0u), 8);   // six padding bits, then the two flags
		// A padding bit before each index; the index checks its range.
		if (hasPrefix)
		{
			_writer.write(false);
			Encoder::integer(_writer, name.prefixId());
		}
		if (hasNamespace)
		{
			_writer.write(false);
			Encoder::integer(_writer, name.namespaceId());
		}
		_writer.write(false);
		Encoder::integer(_writer, name.localNameId());
	}
}


void HeaderWriter::writeDeclarations(const DeferredProlog& prolog)
	/// The notations, then the unparsed entities, each list ended by a
	/// terminator and padding.
{
	// A record keeps an absent identifier as an empty string; an empty
	// identifier is written as absent.
	auto given = [](const std::string& identifier) { return identifier.empty() ? 0 : &identifier; };
	const std::vector<Notation>& notations = prolog.notations();
	for (const Notation& notation: notations)
	{
		_writer.write(0x30u, 6);                  // 110000
		_items.notation(notation.getName(), given(notation.getPublicId()), given(notation.getSystemId()));
	}
	if (!notations.empty()) _writer.write(0xF0u, 8);
	const std::vector<UnparsedEntity>& entities = prolog.unparsedEntities();
	for (const UnparsedEntity& entity: entities)
	{
		_writer.write(0x68u, 7);                  // 1101000
		_items.unparsedEntity(entity.getName(), given(entity.getPublicId()), entity.getSystemId(), entity.getNotationName());
	}
	if (!entities.empty()) _writer.write(0xF0u, 8);
}


} } // namespace Ixor::FastInfoset

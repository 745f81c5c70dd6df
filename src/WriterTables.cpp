#include "WriterTables.h"
#include <algorithm>
#include <iterator>


namespace Ixor {
namespace FastInfoset {


WriterTables::WriterTables(DocumentVocabulary& vocabulary):
	_vocabulary(vocabulary),
	_viewsRevision(~UInt64(0)),
	_views(),
	_nameViews(),
	_generation(1),
	_slotGenerations()
{
}


void WriterTables::refreshViews()
{
	for (StringTableView& view: _views) view = StringTableView();
	for (NameTableView& view: _nameViews) view = NameTableView();
	forgetNames();
	_viewsRevision = _vocabulary.revision();
}


WriterTables::NameTableView& WriterTables::nameViewOf(bool element)
{
	checkViews();
	NameTableView& view = _nameViews[element];
	if (!view.pTable)
	{
		const Vocabulary<QualifiedNameEntry>* pTable = element ? _vocabulary.elementVocabulary() : _vocabulary.attributeVocabulary();
		view.pTable = pTable;
		view.pMap = dynamic_cast<const MapVocabulary<QualifiedNameEntry>*>(pTable);
		view.pHash = view.pMap ? 0 : dynamic_cast<const HashVocabulary<QualifiedNameEntry>*>(pTable);
	}
	return view;
}


unsigned int WriterTables::findInOther(DocumentVocabulary::ID id, const char* data, std::size_t length)
{
	bool found = false;
	_text.assign(data, length);
	return viewOf(id).pTable->exists(_text, found);
}


unsigned int WriterTables::indexOfInOther(DocumentVocabulary::ID id, const char* data, std::size_t length, bool& existed)
{
	const Vocabulary<std::string>* pTable = viewOf(id).pTable;
	_text.assign(data, length);
	const unsigned int index = pTable->exists(_text, existed);
	if (existed || pTable->size() > MAX_INDEX) return index;
	return _vocabulary.index(id, _text, existed);
}


void WriterTables::forgetNames()
{
	if (++_generation != 0) return;
	for (auto& generations: _slotGenerations) std::fill(std::begin(generations), std::end(generations), 0u);
	_generation = 1;
}


unsigned int WriterTables::findName(const std::string& prefix, const std::string& uri, const std::string& localName, bool element, StoredName* pStored)
{
	// Names repeat: a name found before is recognised by its three parts,
	// compared with the strings that the tables hold, without looking any
	// of them up again. The slot is chosen by the local name and the
	// lengths of the other two, which costs no walk over a long namespace
	// name. The table pointers guard against nothing more than the
	// revision does.
	const void* pNameTable = element ? _vocabulary.elementVocabulary() : _vocabulary.attributeVocabulary();
	const void* pLocalTable = viewOf(DocumentVocabulary::LOCAL_NAME).pTable;
	const UInt32 hash = VocabularyHash<std::string>::bytes(localName.data(), localName.size())
		^ static_cast<UInt32>(uri.size() * 0x9E3779B1u) ^ static_cast<UInt32>(prefix.size() * 0x85EBCA77u);
	UInt32& slotGeneration = _slotGenerations[element][hash % NAME_CACHE_SIZE];
	NameCacheSlot& slot = _nameCache[element][hash % NAME_CACHE_SIZE];
	if (slotGeneration != _generation || slot.pNameTable != pNameTable || slot.pLocalTable != pLocalTable || slot.hash != hash
		|| !VocabularyHash<std::string>::equal(*slot.pLocalName, localName.data(), localName.size())
		|| !VocabularyHash<std::string>::equal(*slot.pURI, uri.data(), uri.size())
		|| !VocabularyHash<std::string>::equal(*slot.pPrefix, prefix.data(), prefix.size()))
	{
		const unsigned int prefixIndex = find(DocumentVocabulary::PREFIX, prefix.data(), prefix.size());
		if (prefixIndex == NOT_FOUND) return NOT_FOUND;
		const unsigned int namespaceIndex = find(DocumentVocabulary::NAMESPACE_NAME, uri.data(), uri.size());
		if (namespaceIndex == NOT_FOUND) return NOT_FOUND;
		const unsigned int localIndex = find(DocumentVocabulary::LOCAL_NAME, localName.data(), localName.size());
		if (localIndex == NOT_FOUND) return NOT_FOUND;
		const unsigned int index = findName(QualifiedNameEntry(prefixIndex, namespaceIndex, localIndex), element);
		if (index == NOT_FOUND) return NOT_FOUND;
		slot.pNameTable = pNameTable;
		slot.pLocalTable = pLocalTable;
		slot.pLocalName = &_vocabulary.value(DocumentVocabulary::LOCAL_NAME, localIndex);
		slot.pPrefix = stored(DocumentVocabulary::PREFIX, prefixIndex);
		slot.pURI = stored(DocumentVocabulary::NAMESPACE_NAME, namespaceIndex);
		slot.hash = hash;
		slotGeneration = _generation;
		slot.index = index;
	}
	if (pStored)
	{
		pStored->pPrefix = slot.pPrefix;
		pStored->pURI = slot.pURI;
		pStored->pLocalName = slot.pLocalName;
	}
	return slot.index;
}


unsigned int WriterTables::findName(const QualifiedNameEntry& name, bool element)
{
	const NameTableView& view = nameViewOf(element);
	if (view.pMap) return view.pMap->find(name);
	if (view.pHash) return view.pHash->find(name);
	bool found = false;
	return view.pTable->exists(name, found);
}


unsigned int WriterTables::addName(const QualifiedNameEntry& name, bool element)
{
	const NameTableView& view = nameViewOf(element);
	bool qneExists = false;
	unsigned int index = NOT_FOUND;
	if (view.pMap) index = const_cast<MapVocabulary<QualifiedNameEntry>*>(view.pMap)->indexWithin(name, MAX_INDEX, qneExists);
	else if (view.pHash) index = const_cast<HashVocabulary<QualifiedNameEntry>*>(view.pHash)->indexWithin(name, MAX_INDEX, qneExists);
	else if (view.pTable->size() <= MAX_INDEX) index = (element ? _vocabulary.elementVocabulary() : _vocabulary.attributeVocabulary())->index(name, qneExists);
	// A literal is only written for a name that is not in the table.
	poco_assert(!qneExists);
	return index;
}


std::size_t WriterTables::nameCount(bool element)
{
	return nameViewOf(element).pTable->size();
}


WriterTables::Sizes WriterTables::sizes()
{
	Sizes result = Sizes();
	for (int id = DocumentVocabulary::PREFIX; id <= DocumentVocabulary::CONTENT_CHARACTER_CHUNK; ++id)
		result.strings[id] = viewOf(static_cast<DocumentVocabulary::ID>(id)).pTable->size();
	for (bool element: {false, true}) result.names[element] = nameViewOf(element).pTable->size();
	return result;
}


namespace
{
	template <class T, class View>
	void truncateTable(const View& view, std::size_t size)
	{
		if (view.pMap) const_cast<MapVocabulary<T>*>(view.pMap)->truncate(size);
		else const_cast<HashVocabulary<T>*>(view.pHash)->truncate(size);
	}
}


bool WriterTables::canTruncate()
{
	for (int id = DocumentVocabulary::PREFIX; id <= DocumentVocabulary::CONTENT_CHARACTER_CHUNK; ++id)
	{
		const StringTableView& view = viewOf(static_cast<DocumentVocabulary::ID>(id));
		if (!view.pMap && !view.pHash) return false;
	}
	for (bool element: {false, true})
	{
		const NameTableView& view = nameViewOf(element);
		if (!view.pMap && !view.pHash) return false;
	}
	return true;
}


void WriterTables::truncate(const Sizes& sizes)
{
	for (int id = DocumentVocabulary::PREFIX; id <= DocumentVocabulary::CONTENT_CHARACTER_CHUNK; ++id)
		truncateTable<std::string>(viewOf(static_cast<DocumentVocabulary::ID>(id)), sizes.strings[id]);
	for (bool element: {false, true}) truncateTable<QualifiedNameEntry>(nameViewOf(element), sizes.names[element]);
	// Indexes remembered may now name other entries, or none.
	forgetNames();
}


const std::string* WriterTables::stored(DocumentVocabulary::ID id, unsigned int index)
{
	return index == NOT_FOUND ? 0 : &viewOf(id).pTable->index()[index];
}


} } // namespace Ixor::FastInfoset

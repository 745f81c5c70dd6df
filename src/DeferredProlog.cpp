#include "DeferredProlog.h"


namespace Ixor {
namespace FastInfoset {


void DeferredProlog::addNotation(const std::string& name, const std::string* pPublicId, const std::string* pSystemId)
{
	_notations.push_back(Notation(name, pPublicId ? *pPublicId : std::string(), pSystemId ? *pSystemId : std::string()));
}


void DeferredProlog::addUnparsedEntity(const std::string& name, const std::string* pPublicId, const std::string& systemId, const std::string& notationName)
{
	_unparsedEntities.push_back(UnparsedEntity(name, pPublicId ? *pPublicId : std::string(), systemId, notationName));
}


DeferredProlog::Item& DeferredProlog::nextItem(Item::Kind kind)
{
	if (_itemCount == _items.size()) _items.emplace_back();
	Item& item = _items[_itemCount++];
	item.kind = kind;
	return item;
}


void DeferredProlog::addProcessingInstruction(const std::string& target, const std::string& data)
{
	Item& item = nextItem(Item::PROCESSING_INSTRUCTION);
	item.first = target;
	item.second = data;
}


void DeferredProlog::addComment(const char* text, std::size_t length)
{
	Item& item = nextItem(Item::COMMENT);
	item.first.assign(text, length);
	item.second.clear();
}


void DeferredProlog::addDTDStart(const std::string& publicId, const std::string& systemId)
{
	Item& item = nextItem(Item::DTD_START);
	item.first = publicId;
	item.second = systemId;
}


void DeferredProlog::addDTDEnd()
{
	Item& item = nextItem(Item::DTD_END);
	item.first.clear();
	item.second.clear();
}


std::size_t DeferredProlog::itemCount() const
{
	return _itemCount;
}


const DeferredProlog::Item& DeferredProlog::item(std::size_t i) const
{
	return _items[i];
}


void DeferredProlog::clearItems()
{
	_itemCount = 0;
}


void DeferredProlog::clear()
{
	_notations.clear();
	_unparsedEntities.clear();
	_itemCount = 0;
}


} } // namespace Ixor::FastInfoset

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


void DeferredProlog::addProcessingInstruction(const std::string& target, const std::string& data)
{
	_items.push_back(Item{Item::PROCESSING_INSTRUCTION, target, data});
}


void DeferredProlog::addComment(const char* text, std::size_t length)
{
	_items.push_back(Item{Item::COMMENT, std::string(text, length), std::string()});
}


void DeferredProlog::addDTDStart(const std::string& publicId, const std::string& systemId)
{
	_items.push_back(Item{Item::DTD_START, publicId, systemId});
}


void DeferredProlog::addDTDEnd()
{
	_items.push_back(Item{Item::DTD_END, std::string(), std::string()});
}


void DeferredProlog::clearItems()
{
	_items.clear();
}


void DeferredProlog::clear()
{
	_notations.clear();
	_unparsedEntities.clear();
	_items.clear();
}


} } // namespace Ixor::FastInfoset

#include "Ixor/FastInfoset/UnparsedEntity.h"


namespace Ixor {
namespace FastInfoset {


UnparsedEntity::UnparsedEntity()
{
}


UnparsedEntity::UnparsedEntity(const std::string& name, const std::string& publicId, const std::string& systemId, const std::string& notationName):
	_name(name),
	_publicId(publicId),
	_systemId(systemId),
	_notationName(notationName)
{
}


} } // namespace Ixor::FastInfoset

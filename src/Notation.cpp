#include "Ixor/FastInfoset/Notation.h"


namespace Ixor {
namespace FastInfoset {


Notation::Notation()
{
}


Notation::Notation(const std::string& name, const std::string& publicId, const std::string& systemId):
	_name(name),
	_publicId(publicId),
	_systemId(systemId)
{
}


} } // namespace Ixor::FastInfoset

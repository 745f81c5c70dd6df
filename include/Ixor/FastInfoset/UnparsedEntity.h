//
// UnparsedEntity.h
//
// Library: FastInfoset
// Module:  UnparsedEntity
//


#ifndef FastInfoset_UnparsedEntity_INCLUDED
#define FastInfoset_UnparsedEntity_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include <string>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API UnparsedEntity
	/// One unparsed entity declaration of a document type declaration.
	/// Absent identifiers are empty strings.
{
public:
	UnparsedEntity();

	UnparsedEntity(const std::string& name, const std::string& publicId, const std::string& systemId, const std::string& notationName);

	const std::string& getName() const;
	const std::string& getPublicId() const;
	const std::string& getSystemId() const;
	const std::string& getNotationName() const;

private:
	std::string _name;
	std::string _publicId;
	std::string _systemId;
	std::string _notationName;
};


//
// inlines
//
inline const std::string& UnparsedEntity::getName() const
{
	return _name;
}


inline const std::string& UnparsedEntity::getPublicId() const
{
	return _publicId;
}


inline const std::string& UnparsedEntity::getSystemId() const
{
	return _systemId;
}


inline const std::string& UnparsedEntity::getNotationName() const
{
	return _notationName;
}


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_UnparsedEntity_INCLUDED

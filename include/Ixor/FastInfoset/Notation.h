//
// Notation.h
//
// Library: FastInfoset
// Module:  Notation
//


#ifndef FastInfoset_Notation_INCLUDED
#define FastInfoset_Notation_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include <string>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API Notation
	/// One notation declaration of a document type declaration. Absent
	/// identifiers are empty strings.
{
public:
	Notation();

	Notation(const std::string& name, const std::string& publicId, const std::string& systemId);

	const std::string& getName() const;
	const std::string& getPublicId() const;
	const std::string& getSystemId() const;

private:
	std::string _name;
	std::string _publicId;
	std::string _systemId;
};


//
// inlines
//
inline const std::string& Notation::getName() const
{
	return _name;
}


inline const std::string& Notation::getPublicId() const
{
	return _publicId;
}


inline const std::string& Notation::getSystemId() const
{
	return _systemId;
}


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_Notation_INCLUDED

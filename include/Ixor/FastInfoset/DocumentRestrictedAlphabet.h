//
// DocumentRestrictedAlphabet.h
//
// Library: FastInfoset
// Module:  DocumentRestrictedAlphabet
//


#ifndef FastInfoset_DocumentRestrictedAlphabet_INCLUDED
#define FastInfoset_DocumentRestrictedAlphabet_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/RestrictedAlphabet.h"
#include <string>
#include <vector>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API DocumentRestrictedAlphabet
	/// The restricted alphabets of a document by their index, which starts
	/// at 1. Indexes 1 and 2 are the built-in numeric and date-and-time
	/// alphabets, 3 to 15 are reserved placeholders, and added alphabets get
	/// the indexes from 16 on.
{
public:
	static constexpr const char* NUMERIC_CHARACTERS = "0123456789-+.E ";
	static constexpr const char* DATE_TIME_CHARACTERS = "0123456789-:TZ ";

	DocumentRestrictedAlphabet();
		/// The 15 built-in and reserved alphabets.

	explicit DocumentRestrictedAlphabet(bool);
		/// An empty table, for differences.

	unsigned int add(const std::string& utf8Characters);
		/// Appends an alphabet of the given characters and returns its
		/// position; its index is that position plus 1.

	void addDummy();
		/// Appends a placeholder.

	void restore(const DocumentRestrictedAlphabet& base);
		/// Makes this table equal to base. A table that starts with base's
		/// alphabets, as one that documents added to does, only drops the
		/// alphabets after them, which allocates nothing.

	bool isDefined(unsigned int index) const;
		/// True when index names an alphabet with characters: a built-in or
		/// an added one. False for 0, the reserved placeholders and indexes
		/// beyond the table, which a document must not name.

	RestrictedAlphabet& alphabet(unsigned int vocabulary);
	const RestrictedAlphabet& alphabet(unsigned int vocabulary) const;
		/// The alphabet of the given index; asserts that it exists.

	const std::vector<RestrictedAlphabet>& alphabets() const;
		/// All alphabets; position p holds index p + 1.

	DocumentRestrictedAlphabet operator - (const DocumentRestrictedAlphabet& other) const;
		/// The alphabets that this table has beyond the length of other,
		/// which must not be longer (an assertion).

private:
	std::vector<RestrictedAlphabet> _alphabets;
};


//
// inlines
//
inline bool DocumentRestrictedAlphabet::isDefined(unsigned int index) const
{
	return index > 0 && index <= _alphabets.size() && _alphabets[index - 1].bitSize() > 0;
}


inline RestrictedAlphabet& DocumentRestrictedAlphabet::alphabet(unsigned int vocabulary)
{
	poco_assert(vocabulary > 0 && vocabulary <= _alphabets.size());
	return _alphabets[vocabulary - 1];
}


inline const RestrictedAlphabet& DocumentRestrictedAlphabet::alphabet(unsigned int vocabulary) const
{
	poco_assert(vocabulary > 0 && vocabulary <= _alphabets.size());
	return _alphabets[vocabulary - 1];
}


inline const std::vector<RestrictedAlphabet>& DocumentRestrictedAlphabet::alphabets() const
{
	return _alphabets;
}


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_DocumentRestrictedAlphabet_INCLUDED

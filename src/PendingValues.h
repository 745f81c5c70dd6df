//
// PendingValues.h
//
// Library: FastInfoset
// Module:  PendingValues
//
// The typed values a writer holds until the next event of another kind.
// Internal: this header is not installed.
//


#ifndef FastInfoset_PendingValues_INCLUDED
#define FastInfoset_PendingValues_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Encoding.h"
#include "AlgorithmTable.h"
#include <cstddef>
#include <vector>


namespace Ixor {
namespace FastInfoset {


class PendingValues
	/// Typed values given one by one, as runs: a value of the algorithm of
	/// the last run joins it, any other starts a new run. Each run becomes
	/// one encoded string.
	///
	/// A run starts with the value object that the last run of its
	/// algorithm used, emptied, when nothing else holds it any more, so
	/// that a writer allocates no object per run.
{
public:
	typedef std::vector<Ixor::AutoPtr<Encoding>> Runs;

	bool empty() const;

	template <class E, class... Values>
	void append(unsigned int type, const Values&... values);
		/// Appends one value of algorithm type, whose class is E, made of
		/// values as E's constructor and E::append() take them.

	Runs& runs();
		/// In the order they were given.

	void clear();
		/// Drops the runs; their objects stay for reuse.

private:
	Runs                    _runs;
	Ixor::AutoPtr<Encoding> _spares[AlgorithmTable::LAST + 1];   // by algorithm index
};


//
// inlines
//
inline bool PendingValues::empty() const
{
	return _runs.empty();
}


template <class E, class... Values>
void PendingValues::append(unsigned int type, const Values&... values)
	/// What merging a new E of values into the last run would do, without
	/// the new object.
{
	if (!_runs.empty() && _runs.back()->type() == type)
	{
		static_cast<E&>(*_runs.back()).append(values...);
		return;
	}
	Ixor::AutoPtr<Encoding>& spare = _spares[type];
	if (spare && spare->referenceCount() == 1)
	{
		E& value = static_cast<E&>(*spare);
		value.clear();
		value.append(values...);
	}
	else spare = new E(values...);
	_runs.push_back(spare);
}


inline PendingValues::Runs& PendingValues::runs()
{
	return _runs;
}


inline void PendingValues::clear()
{
	_runs.clear();
}


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_PendingValues_INCLUDED

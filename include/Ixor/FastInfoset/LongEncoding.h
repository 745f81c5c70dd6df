//
// LongEncoding.h
//
// Library: FastInfoset
// Module:  ValueListEncoding
//
// LongEncoding is declared with the other typed lists in ValueListEncoding.h.
//


#ifndef FastInfoset_LongEncoding_INCLUDED
#define FastInfoset_LongEncoding_INCLUDED


#include "Ixor/FastInfoset/ValueListEncoding.h"


#endif // FastInfoset_LongEncoding_INCLUDED

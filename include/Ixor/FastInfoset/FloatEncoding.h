//
// FloatEncoding.h
//
// Library: FastInfoset
// Module:  ValueListEncoding
//
// FloatEncoding is declared with the other typed lists in ValueListEncoding.h.
//


#ifndef FastInfoset_FloatEncoding_INCLUDED
#define FastInfoset_FloatEncoding_INCLUDED


#include "Ixor/FastInfoset/ValueListEncoding.h"


#endif // FastInfoset_FloatEncoding_INCLUDED

//
// IntEncoding.h
//
// Library: FastInfoset
// Module:  ValueListEncoding
//
// IntEncoding is declared with the other typed lists in ValueListEncoding.h.
//


#ifndef FastInfoset_IntEncoding_INCLUDED
#define FastInfoset_IntEncoding_INCLUDED


#include "Ixor/FastInfoset/ValueListEncoding.h"


#endif // FastInfoset_IntEncoding_INCLUDED

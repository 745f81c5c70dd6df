//
// EncodingWriter.h
//
// Tool: fitool
// Module: EncodingWriter
//


#ifndef Fitool_EncodingWriter_INCLUDED
#define Fitool_EncodingWriter_INCLUDED


#include "Ixor/FastInfoset/FastInfosetWriter.h"


namespace Fitool {


class EncodingWriter: public Ixor::FastInfoset::FastInfosetWriter
	/// The FastInfosetWriter that fitool feeds from the host's XML parser.
	///
	/// The writer takes notations and unparsed entities only before
	/// startDocument(), and the XML parser reports them after it: such a
	/// declaration would trip the writer's assertion. This writer refuses it
	/// first, with FISException "Cannot encode declarations of notations and
	/// unparsed entities" naming the declaration.
{
public:
	EncodingWriter(std::ostream& out, bool writeXMLDeclaration);
		/// A writer with map tables, which grow without limit.

	~EncodingWriter();

	void startDocument();
	void notationDecl(const Ixor::XML::XMLString& name, const Ixor::XML::XMLString* publicId, const Ixor::XML::XMLString* systemId);
	void unparsedEntityDecl(const Ixor::XML::XMLString& name, const Ixor::XML::XMLString* publicId, const Ixor::XML::XMLString& systemId, const Ixor::XML::XMLString& notationName);

private:
	bool _started;
};


} // namespace Fitool


#endif // Fitool_EncodingWriter_INCLUDED

//
// TextFormat.h
//
// Tool: fitool
// Module: TextFormat
//


#ifndef Fitool_TextFormat_INCLUDED
#define Fitool_TextFormat_INCLUDED


#include <cstddef>
#include <string>


namespace Fitool {


class TextFormat
	/// Small formatting helpers for the listings and tables that fitool
	/// prints: quoted strings that stay on one line, octet counts and shares.
{
public:
	static std::string quoted(const std::string& text, std::size_t maxLength = 48);
		/// The text in double quotes with control characters, quotes and
		/// backslashes escaped (\n, \t, \", \\, \xNN), so that one string
		/// never breaks a listing line. Longer texts are cut after
		/// maxLength octets (never inside a UTF-8 sequence) and marked with
		/// "..." and their full length.

	static std::string octets(double bits);
		/// Bits as octets with one decimal ("12.5"), or without decimal when
		/// they are whole ("12").

	static std::string percent(double part, double whole);
		/// part / whole as a percentage with one decimal ("12.5%"); "-" when
		/// whole is 0.

	static std::string megabytes(double octets);
		/// Octets in MB (2^20 octets) with one decimal.

	static std::string milliseconds(double microseconds);
		/// A duration with three significant digits ("0.412 ms", "12.3 ms",
		/// "1234 ms").

	static std::string padLeft(const std::string& text, std::size_t width);
	static std::string padRight(const std::string& text, std::size_t width);

private:
	TextFormat() = delete;
};


} // namespace Fitool


#endif // Fitool_TextFormat_INCLUDED

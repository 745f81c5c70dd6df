#include "TextFormat.h"
#include "Poco/NumberFormatter.h"


namespace Fitool {


std::string TextFormat::quoted(const std::string& text, std::size_t maxLength)
{
	std::size_t end = text.size();
	if (end > maxLength)
	{
		end = maxLength;
		// Back up to the start of a UTF-8 sequence, so that the cut leaves
		// whole characters.
		while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
	}
	std::string result = "\"";
	for (std::size_t i = 0; i < end; ++i)
	{
		const unsigned char c = static_cast<unsigned char>(text[i]);
		switch (c)
		{
		case '\n': result += "\\n"; break;
		case '\r': result += "\\r"; break;
		case '\t': result += "\\t"; break;
		case '"':  result += "\\\""; break;
		case '\\': result += "\\\\"; break;
		default:
			if (c < 0x20 || c == 0x7F) result += "\\x" + Poco::NumberFormatter::formatHex(static_cast<unsigned>(c), 2);
			else result += static_cast<char>(c);
		}
	}
	result += '"';
	if (end < text.size()) result += "... (" + Poco::NumberFormatter::format(text.size()) + " octets)";
	return result;
}


std::string TextFormat::octets(double bits)
{
	const double value = bits / 8;
	if (static_cast<double>(static_cast<long long>(value)) == value)
		return Poco::NumberFormatter::format(static_cast<Poco::Int64>(value));
	return Poco::NumberFormatter::format(value, 1);
}


std::string TextFormat::percent(double part, double whole)
{
	if (whole == 0) return "-";
	return Poco::NumberFormatter::format(100 * part / whole, 1) + "%";
}


std::string TextFormat::megabytes(double octets)
{
	return Poco::NumberFormatter::format(octets / (1024 * 1024), 1);
}


std::string TextFormat::milliseconds(double microseconds)
{
	const double ms = microseconds / 1000;
	if (ms < 1) return Poco::NumberFormatter::format(ms, 3) + " ms";
	if (ms < 10) return Poco::NumberFormatter::format(ms, 2) + " ms";
	if (ms < 100) return Poco::NumberFormatter::format(ms, 1) + " ms";
	return Poco::NumberFormatter::format(ms, 0) + " ms";
}


std::string TextFormat::padLeft(const std::string& text, std::size_t width)
{
	return text.size() >= width ? text : std::string(width - text.size(), ' ') + text;
}


std::string TextFormat::padRight(const std::string& text, std::size_t width)
{
	return text.size() >= width ? text : text + std::string(width - text.size(), ' ');
}


} // namespace Fitool

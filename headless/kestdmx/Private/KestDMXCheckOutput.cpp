// The findings of a check as editors and CI read them: one line each, or a JSON array.
#include "KestDMXCheck.h"

#include <sstream>

std::string FormatKestCheckFindings(const std::vector<FKestCheckFinding>& Findings)
{
	std::ostringstream Out;
	for (const FKestCheckFinding& Finding : Findings)
	{
		Out << Finding.File << ':' << Finding.Line << ": warning[" << Finding.Code << "]: " << Finding.Message << '\n';
	}
	return Out.str();
}

std::string FormatKestCheckFindingsAsJson(const std::vector<FKestCheckFinding>& Findings)
{
	nlohmann::ordered_json Array = nlohmann::ordered_json::array();
	for (const FKestCheckFinding& Finding : Findings)
	{
		nlohmann::ordered_json Entry;
		Entry["file"] = Finding.File;
		Entry["line"] = Finding.Line;
		Entry["code"] = Finding.Code;
		Entry["message"] = Finding.Message;
		Entry["call"] = Finding.Call.empty() ? nlohmann::ordered_json(nullptr) : nlohmann::ordered_json(Finding.Call);
		Entry["key"] = Finding.Key.empty() ? nlohmann::ordered_json(nullptr) : nlohmann::ordered_json(Finding.Key);
		Entry["given"] = Finding.Given;
		Entry["used"] = Finding.Used;
		Array.push_back(std::move(Entry));
	}
	// Scripts may hold any bytes; what is not UTF-8 is shown as U+FFFD.
	return Array.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

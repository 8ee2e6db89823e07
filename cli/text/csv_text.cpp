#include "cli/text/csv_text.h"

namespace cli {

void AppendCsvField(std::string& out, std::string_view text) {
    if (text.find_first_of("\",\r\n") == std::string_view::npos) {
        out += text;
        return;
    }
    out += '"';
    for (const char byte : text) {
        if (byte == '"') {
            out += '"';
        }
        out += byte;
    }
    out += '"';
}

}  // namespace cli

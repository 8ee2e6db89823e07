// SPDX-License-Identifier: MIT
#ifndef VORN_CLI_OPTIONS_PARSER_H
#define VORN_CLI_OPTIONS_PARSER_H

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace cli {

/** The options of one command: what there is, and what is done with each that is given. */
class Parser {
public:
    using Take = std::function<void(const std::string&)>;

    Parser();
    ~Parser();

    /** @param names  such as "-q,--quiet" */
    void AddFlag(const std::string& names, std::function<void()> take);
    void AddFlag(const std::string& names, bool& flag);

    /**
     * @param value  what is to stand behind the name, for whoever left it out
     * @param take   gets each text as it was written
     */
    void AddValue(const std::string& name, const std::string& value, Take take);

    /**
     * Reads options up to "--".
     *
     * @return the operands: what is neither an option nor its value, and all behind "--"
     * @throws UsageError
     */
    std::vector<std::string> Parse(std::vector<std::string> arguments);

    /** Names such as "--by" and "-q". */
    std::vector<std::string> Names() const;

private:
    void ParseOptions(std::vector<std::string> arguments);

    std::unique_ptr<CLI::App> app_;
    std::map<std::string, std::string> values_;
};

}  // namespace cli

#endif

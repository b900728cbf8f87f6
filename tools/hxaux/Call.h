// SPDX-License-Identifier: LicenseRef-HXAux
// One run of a verb: its values and its report.
#pragma once

#include "hx-aux/errors.h"
#include "tools/cli/Arguments.h"
#include "tools/hxaux/Report.h"
#include "tools/hxaux/Screen.h"

#include <memory>
#include <string>

namespace hxaux {

/// Ends a verb early; the report is complete by then.
struct Stop {};

class Call : public cli::Call {
public:
    Call(const cli::Arguments& arguments, Screen& screen, std::shared_ptr<void>& kept);

    /// Ends the verb with the code's text and status, unless it is success.
    void check(Halvix::eErr code, const std::string& item = "");
    /// Records a failure of one item of several and continues; true on success.
    bool attempt(const std::string& item, Halvix::eErr code);
    /// Ends the verb for a reason that the tool itself detected.
    [[noreturn]] void fail(Exit status, const std::string& text);
    /// Ends the verb with the code's text and a status that the caller knows better than the code alone says.
    [[noreturn]] void fail(Exit status, const std::string& item, Halvix::eErr code);
    /// Records such a reason and continues.
    void problem(Exit status, const std::string& item, const std::string& text);

    void print(const std::string& name, Value value, const std::string& unit = "");
    void printNamedByUser(const std::string& name, Value value); ///< a key of the unit's own, such as a setting
    void noteTime();                                             ///< the time of day becomes part of what is shown next
    void document(const std::string& name, const std::string& text) override;
    void note(const std::string&
                  text); ///< a sentence on standard error to the user: "request sent; the outcome is not known"

    /// For verbs that report more than one state: prints what was collected since the last call.
    void show();
    /// The last of them; for the frame.
    void end();
    /// Whether the output is interactive: progress bars and prompts are for terminals only.
    [[nodiscard]] bool onTerminal() const { return screen_.onTerminal(); }
    [[nodiscard]] bool asJson() const { return screen_.form() == Form::Json; }
    [[nodiscard]] Screen& screen() { return screen_; }

    /// State of a verb over all rounds of --watch: created from this call on first use, destroyed with the last
    /// round, before held signals take effect.
    template <typename Kind>
    Kind& kept()
    {
        if (kept_ == nullptr)
            kept_ = std::make_shared<Kind>(*this);
        return *static_cast<Kind*>(kept_.get());
    }

    [[nodiscard]] Exit status() const { return report_.status; }

private:
    void note(Exit status, Problem problem);

    Screen& screen_;
    std::shared_ptr<void>& kept_;
    Report report_;
    bool shown_ = false; ///< something was printed already
};

/// The default status of an error code: 11 and 20 are busy, 14 a difference, 12 a bad file.
Exit statusOf(Halvix::eErr code);

} // namespace hxaux

#include "diagnostics/Presentation.h"
#include "platform/HandlerSlot.h"
#include "platform/Lock.h"
#include "platform/reporting.h"
#include <mutex>
#include <set>
#include <utility>

namespace pixkit {

namespace {

HandlerSlot<ErrorReportPresenter> presenterInUse;

// Which errors have been shown in this process, and whether one is being shown now.
class Presentation {
  public:
    // One report's turn, for the length of a scope. False when it is not its turn.
    class Turn {
      public:
        Turn(Presentation& presentation, std::string error) : m_presentation(presentation), m_error(std::move(error)) {
            const std::scoped_lock lock(m_presentation.m_mutex);
            if (m_presentation.m_isShowing || m_presentation.m_shown.size() >= most) return;
            if (!m_presentation.m_shown.insert(m_error).second) return;
            m_isMine = m_presentation.m_isShowing = true;
        }
        ~Turn() {
            if (!m_isMine) return;
            const std::scoped_lock lock(m_presentation.m_mutex);
            m_presentation.m_isShowing = false;
            if (!wasShown) m_presentation.m_shown.erase(m_error);
        }
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;
        explicit operator bool() const noexcept { return m_isMine; }

        bool wasShown = false; // by its presenter

      private:
        Presentation& m_presentation;
        std::string m_error;
        bool m_isMine = false;
    };

  private:
    static constexpr std::size_t most = 100; // whoever reads so many stops reading

    platform::Lock m_mutex;
    std::set<std::string> m_shown;
    bool m_isShowing = false;
};

Presentation presentation;

} // namespace

void setErrorReportPresenter(ErrorReportPresenter presenter) {
    presenterInUse.set(std::move(presenter));
}

bool showErrorReport(const ErrorReport& report) {
    return platform::showErrorDialog("pixkit has encountered a problem. We are sorry for the inconvenience.",
                                     "Application Error", report.text);
}

void present(const ErrorReport& report) {
    const auto presenter = presenterInUse.get();
    if (!presenter || report.isUnattended) return;
    const std::string error =
        report.module + ":" + std::to_string(report.line) + " " + report.procedure + ": " + report.description;
    if (Presentation::Turn turn(presentation, error); turn) turn.wasShown = (*presenter)(report);
}

} // namespace pixkit
// SPDX-License-Identifier: MIT

#pragma once
// CSettingsApplyTrail: what a settings change has done so far, so that a
// failure in the middle leaves one error-level log line from which an
// administrator can put the server back by hand: the step that failed, the
// steps done before it, and where the settings in force before the change are.
#include <string>
#include <vector>

class CSettingsApplyTrail {
public:
    // previousSettings: where the settings in force are before anything is done
    // (the settings file).
    explicit CSettingsApplyTrail(std::string previousSettings);

    // The step about to run; a failure is reported against it.
    void Begin(std::string step);
    // The step begun last ended; `what` says what it did.
    void Done(std::string what);
    // From now on the settings in force before the change are kept here.
    void PreviousSettingsAt(std::string path);

    // The failure line for the exception being handled (call from inside a
    // catch clause); written at level 0, so it is there at every trace level.
    void LogFailure() const noexcept;
    std::string FailureText(const std::string& error) const;

private:
    std::string m_previous;
    std::string m_step;
    std::vector<std::string> m_done;
};

#pragma once

#include "link/ProductReach.h"

namespace corvane {

/// What the jobs with the product have in common: each hears the link's packets itself as long as
/// it lives, keeps the link running while it waits, and knows what has become of it.
class ProductJob {
  public:
    ProductJob(const ProductJob&) = delete;
    ProductJob& operator=(const ProductJob&) = delete;

    /// Done as long as nothing has failed.
    [[nodiscard]] const JobOutcome& outcome() const { return outcome_; }

  protected:
    explicit ProductJob(const Workplace& place);
    ~ProductJob() = default;

    virtual void ProcessPacket(const KOPacket& packet) = 0;

    // A failure is told at once, with the normal pointer, and gives false.

    /// `friendlyName` is what the message calls the product.
    [[nodiscard]] bool Connect(const std::string& className, const std::string& friendlyName,
                               bool anyDevice);
    [[nodiscard]] bool fail(JobOutcome outcome);
    [[nodiscard]] bool fail(const std::string& text, const std::string& cure = {});
    /// Until `over`, for so many milliseconds at most, and only while packets can be exchanged.
    template<class Over>
    void await(std::int32_t longest, Over over) {
        AwaitLink(with_, longest, [this, over] { return over() || !with_.link.ready(); });
    }

    Workplace with_;
    JobOutcome outcome_;

  private:
    Connection onPacket_;
};

} // namespace corvane

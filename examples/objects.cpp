// An auction, in C++: objects, children and signals with lambdas as slots.
//
// Bidders listen to the auctioneer. One of them leaves in the middle of a call and is not called
// again; the others go with the auction that owns them.
#include <kestu.hpp>

#include <cstdio>
#include <cstdlib>
#include <exception>

namespace {

class Auction {
  public:
    void admit(const char *name, int highest_bid) {
        const kestu::Object bidder = house_.add_child(name);
        price_called_.connect(bidder, [bidder, highest_bid](int price) {
            if (price <= highest_bid) {
                std::printf("  %s bids\n", bidder.name());
            } else {
                std::printf("  %s leaves\n", bidder.name());
                bidder.destroy();
            }
        });
    }

    void call(int price) {
        std::printf("%d?\n", price);
        price_called_(price);
    }

  private:
    kestu::UniqueObject house_{"auction"};
    kestu::Signal<void(int)> price_called_{house_, "price called"};
};

} // namespace

int main() {
    try {
        const kestu::Library library;
        const kestu::ObjectEngine engine;
        Auction auction;
        auction.admit("Ada", 120);
        auction.admit("Grace", 90);
        auction.call(80);
        auction.call(100);
        auction.call(110);
        return EXIT_SUCCESS;
    } catch (const kestu::Error &error) {
        error.print();
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s\n", error.what());
    }
    return EXIT_FAILURE;
}

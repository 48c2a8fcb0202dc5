// An auction, in C++: objects, children and signals with lambdas as slots.
//
// Bidders listen to the auctioneer. One of them leaves in the middle of a call and is not called
// again; the others go with the auction that owns them.
#include <kestu.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace {

// Turns chains of errors into exceptions at the border between the library and a program that likes
// them.
void check(kestu_error_t *err) {
    if (!err)
        return;
    const std::runtime_error error(err->message ? err->message : "no message");
    kestu_error_clear(kestu_error_handle(err, kestu_error_stdhandler, nullptr));
    throw error;
}

struct Limit {
    int highest_bid;
};

class Auction {
  public:
    Auction() {
        check(kestu_obj_create(&house, "auction", kestu_pool));
        check(kestu_objsig_register(&price_called, "price called"));
        check(kestu_obj_add_signal(house, price_called));
    }
    ~Auction() { kestu_obj_destroy(house); }
    Auction(const Auction &) = delete;
    Auction &operator=(const Auction &) = delete;

    void admit(const char *name, Limit &limit) {
        kestu_obj_t *bidder = nullptr;
        check(kestu_obj_create(&bidder, name, kestu_obj_get_pool(house)));
        check(kestu_obj_addc(house, bidder));
        check(kestu_obj_connect(house, price_called, bidder, answer, &limit));
    }

    void call(int price) {
        std::printf("%d?\n", price);
        check(kestu_obj_emit_signal(house, price_called, &price));
    }

  private:
    static void answer(kestu_obj_t *, uint32_t, kestu_obj_t *bidder, void *limit, void *price) {
        const char *name = kestu_obj_get_name(bidder);
        if (*static_cast<int *>(price) <= static_cast<Limit *>(limit)->highest_bid) {
            std::printf("  %s bids\n", name);
        } else {
            std::printf("  %s leaves\n", name);
            kestu_obj_destroy(bidder);
        }
    }

    kestu_obj_t *house = nullptr;
    uint32_t price_called = 0;
};

} // namespace

int main() {
    if (kestu_initialize() != KESTU_INIT_OK)
        return EXIT_FAILURE;
    int status = EXIT_SUCCESS;
    try {
        check(kestu_obj_engine_init(kestu_pool));
        {
            Limit ada{120}, grace{90};
            Auction auction;
            auction.admit("Ada", ada);
            auction.admit("Grace", grace);
            auction.call(80);
            auction.call(100);
            auction.call(110);
        }
        check(kestu_obj_engine_terminate());
    } catch (const std::exception &) {
        status = EXIT_FAILURE;
    }
    kestu_terminate();
    return status;
}

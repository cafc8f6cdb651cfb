// Operations of vectormat.
#include <utility>

#include "replay/draw.h"

namespace replay {
namespace {

constexpr unsigned n = 300;

const operation table[] = {
    REPLAY("vectormat()", 1, (void)in; out.put(vectormat())),
    ONE("vectormat copy", n, vectormat, vectormat b(a); out.put(b)),
    INTO("vectormat =", n, vectormat, vectormat, a = b; out.put(a); vectormat c; c = std::move(a); out.put(c)),
    REPLAY("vectormat move", n, vectormat a = draw<vectormat>(in); vectormat b(std::move(a)); out.put(b); out.put(a)),
    REPLAY("vectormat empty", 60, vectormat a = draw<vectormat>(in); a.empty(); out.put(a)),
    INTO("vectormat add", n, vectormat, vector, a.add(b); if (a.count > 3) a.add(a.points[2]); out.put(a)),
    INTO("vectormat += vector", n, vectormat, vector, a += b; out.put(a)),
    INTO("vectormat append, reserve", n, vectormat, vectormat, a.append(b); a.reserve(a.count + 5); out.put(a)),
    REPLAY("vectormat del", n, vectormat a = draw<vectormat>(in); a.del(static_cast<tessarn::ulong>(in.integer(0, 33)));
           out.put(a)),
    REPLAY("vectormat -= index", n, vectormat a = draw<vectormat>(in);
           a -= static_cast<tessarn::ulong>(in.integer(0, 33)); out.put(a)),
    REPLAY("vectormat *=", n, vectormat a = draw<vectormat>(in); a *= in.any(); out.put(a)),
    REPLAY("vectormat flip", n, vectormat a = draw<vectormat>(in); a.flip(); out.put(a)),
    REPLAY("vectormat sort", 2 * n, vectormat a = draw<vectormat>(in); a.sort(); out.put(a)),
    REPLAY(
        "vectormat sort large", 40, vectormat a; test::random_source random(in.seed()); for (int i = 0; i < 1500; ++i) {
          const real x = static_cast<real>(random.below(200));
          a.add(vector(x, static_cast<real>(random.uniform())));
        } a.sort();
        out.put(a)),
    ONE("vectormat average", n, vectormat, out.put(a.average())),
    ONE("vectormat avdir", n, vectormat, out.put(a.avdir())),
    REPLAY("vectormat DeleteErrors", n, vectormat a = draw<vectormat>(in); const int kind = in.integer(0, 3);
           const real limit = kind == 0   ? 0
                              : kind == 1 ? in.any()
                                          : in.within(0, 2);
           a.DeleteErrors(limit); out.put(a)),
    REPLAY("vectormat findline", 2 * n, vectormat a = draw<vectormat>(in); const vector direction = draw<vector>(in);
           vectormat* chain = a.findline(direction); out.put(chain != nullptr); if (chain) out.put(*chain); out.put(a);
           delete chain),
};

}  // namespace

const family point_lists = family_of(table);

}  // namespace replay

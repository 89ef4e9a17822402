// Root of the material laws: the data vector, per-element data and their checks.
#pragma once

#include <orv/fem/error_type.h>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "orvmath1/dense1D.h"
#include "orvmath1/ref_counted.h"

namespace orv {
namespace core {

// Where a law is evaluated: the global element number, the point identifier of the
// element's rule (GP_global_ID) and the law step of the run. Per-element data are
// looked up by (element, point); law states by (element, point, step % 50).
struct law_key {
    std::uint32_t element = 0;
    std::uint32_t point = 0;
    std::uint32_t step = 0;
};

// Point value of a per-element entry that holds for every point of the element.
constexpr std::uint32_t law_all_points = 0xFFFFFFFFu;

// Bits of the flag word passed to the compute operations of the laws.
constexpr unsigned law_commit = 1u;           // commit the states of the point
constexpr unsigned law_first_iteration = 2u;  // first iteration of a step

// Return codes of init and of the data checks.
constexpr int law_ok = 0;
constexpr int law_bad_size = -1;
constexpr int law_not_finite = -2;
constexpr int law_memory = fem::error_memory;

// Writes value into data[i] only when it differs, so that normalising data that are
// already normal never writes (several threads may normalise a law's own data). A
// derived value that is not finite is stored as 0, as init stores such values.
inline void set_if_different(dense1D<double>& data, std::size_t i, double value) {
    if (!std::isfinite(value)) value = 0.0;
    if (!(data[i] == value)) data[i] = value;
}

// A law owns its parameters in one vector of doubles (user units, no conversion),
// optionally overridden per element, or per element and point. Laws are shared by
// reference between models; during an assembly they are read only, so that the
// per-element data must be complete before a run.
class law_base : public ref_counted {
public:
    law_base() = default;
    ~law_base() override;
    law_base(const law_base&) = delete;
    law_base& operator=(const law_base&) = delete;

    // A data vector of one value. A non-finite value is stored as 0 and gives -2.
    virtual int init(double value);
    // Copies data, normalises it (a negative result empties the data and is
    // returned), then replaces any non-finite value by 0 and returns -2 if there was
    // one. 0 on success.
    virtual int init(const dense1D<double>& data);
    // The result of the last init (0 before any), so that a host that built the law
    // through a constructor still sees a refused or non-finite value.
    int get_init_code() const { return init_code_; }
    // The data used at a point: the element's own vector if one is set (for this
    // point, else for all points of the element), else the base vector. A view that
    // shares storage with the law.
    virtual dense1D<double> get_data_ref(const law_key& key) const;
    // True when the number of values is accepted by the law.
    virtual bool check_size(const dense1D<double>& data) const = 0;
    // Pads data to the law's full size and fills its derived values; -1 when
    // check_size refuses it. A vector that is already normalised is not written to,
    // so that normalising the law's own data from several threads is safe.
    virtual int normalize(dense1D<double>& data) const;
    // Bounds of the values that the law accepts (for a scalar law the pair min, max).
    // The default is the whole range of doubles.
    virtual void get_limits(double& min, double& max) const;

    // Gives element `element` (and `point`, law_all_points for all the points of
    // the element) its own data. If the law has no base vector yet, this is init(data).
    // Data equal to the base vector after normalisation store nothing (an entry that
    // the element already had is set back to the base values). -1 when the size is
    // refused, -2 when a value is not finite (nothing stored then), -199 on memory.
    // Not thread safe: call it before a run.
    virtual int set_element_by_element(std::uint32_t element, std::uint32_t point, const dense1D<double>& data);
    // True when the key (element, point) has its own entry; the step is not used.
    virtual bool has_element_data(const law_key& key) const;
    // Stores a copy of data under (key.element, key.point), replacing an older one.
    // 0, or -199 on memory.
    virtual int store_element_data(const law_key& key, const dense1D<double>& data);
    // The data at a point, as get_data_ref, normalised: the result of normalize (0,
    // or -1 when the data are not usable).
    virtual int get_element_data(const law_key& key, dense1D<double>& data) const;

    // The base vector.
    const dense1D<double>& get_data() const { return data_; }
    // Room for n per-element entries; false on memory.
    bool reserve_elements(std::size_t n);
    // Number of per-element entries, and their removal.
    std::size_t nbr_element_data() const { return nbr_entries_; }
    void clear_element_data();

    // Number of state values a compute writes per point (0 for elastic laws).
    virtual unsigned nbr_states() const { return 0; }

    // Committed states of the laws that keep them (elasto-plastic laws); laws
    // without states answer with nothing to do. Records are per (element, point,
    // step % 50).
    // Removes every record.
    virtual void reset_states() {}
    // The records of step slot to_step become copies of those of from_step: a run
    // starts a step from the last committed one, or rolls a committed step back.
    // 0, or -199 on memory (nothing changed).
    virtual int copy_states(std::uint32_t from_step, std::uint32_t to_step) {
        (void)from_step;
        (void)to_step;
        return law_ok;
    }
    // Accumulated plastic strain |p| at a point (0 for a point with no record).
    virtual double plasticity(const law_key& key) const {
        (void)key;
        return 0.0;
    }
    // Doubles of one record; 0 for laws without states.
    virtual unsigned state_record_size() const { return 0; }
    // Copies the record of key (state_record_size() values); false when there is
    // none (zeros are written then).
    virtual bool get_state(const law_key& key, double* record) const {
        (void)key;
        (void)record;
        return false;
    }
    // Stores a record under key; 0, or -199 on memory.
    virtual int set_state(const law_key& key, const double* record) {
        (void)key;
        (void)record;
        return law_ok;
    }

protected:
    // True when every value is finite; replaces the others by 0.
    static bool make_finite(dense1D<double>& data);
    // Grows data to n values (new values 0); false on memory.
    static bool pad(dense1D<double>& data, std::size_t n);

    dense1D<double> data_;
    int init_code_ = law_ok;

private:
    struct entry {
        std::uint32_t element = 0;
        std::uint32_t point = 0;
        bool used = false;
        dense1D<double> data;
    };
    const entry* find(std::uint32_t element, std::uint32_t point) const;
    bool grow(std::size_t capacity);

    // Open addressing on the hash 3 * element + 5 * point, linear probing; the
    // capacity is a power of two and doubles when half full.
    std::vector<entry> entries_;
    std::size_t nbr_entries_ = 0;
};

}  // namespace core
}  // namespace orv

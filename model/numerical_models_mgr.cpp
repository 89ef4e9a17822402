// Registry of the numerical models of a context: IDs, free list and global element numbering.
#include "model/numerical_models_mgr.h"
#include <orv/fem/error_type.h>

#include <algorithm>
#include <new>

#include <orv/fem/context.h>
#include <orv/fem/numerical_models_mgr.h>

#include "frame/context_type.h"
#include "model/numerical_model_base.h"

namespace orv {
namespace core {

numerical_models_mgr::numerical_models_mgr() = default;
numerical_models_mgr::~numerical_models_mgr() = default;

Ptr<numerical_model_base> numerical_models_mgr::get_NM_ptr(std::uint32_t ID) const {
    return ID < models_.size() ? models_[ID] : null_model_;
}

std::uint32_t numerical_models_mgr::register_model(numerical_model_base* model, std::uint32_t nbr_elements) {
    if (!model) return no_ID;
    std::lock_guard<std::mutex> guard(lock_);
    try {
        std::uint32_t ID = model->ID();
        if (ID > 0xFFFFFFFEu) {
            if (!free_IDs_.empty()) {
                ID = free_IDs_.back();
                free_IDs_.pop_back();
            } else {
                if (next_ID_ >= 0xFFFFFFFEu) return no_ID;
                ID = next_ID_++;
            }
        }
        // Reserve everything first so that a memory failure leaves the table as it was.
        if (ID >= models_.size()) models_.reserve(std::size_t(ID) + 1);
        if (std::size_t(ID) + 2 > FE_offsets_.size()) FE_offsets_.reserve(std::size_t(ID) + 2);

        if (ID == models_.size())
            models_.push_back(Ptr<numerical_model_base>(model));
        else if (ID < models_.size())
            models_[ID] = model;
        else {
            models_.resize(ID);
            models_.push_back(Ptr<numerical_model_base>(model));
        }

        if (FE_offsets_.empty()) FE_offsets_.push_back(0);
        if (std::size_t(ID) + 1 < FE_offsets_.size()) {
            // The ID has a range: resize it and shift every later entry.
            const std::uint32_t old_count = FE_offsets_[ID + 1] - FE_offsets_[ID];
            const std::uint32_t delta = nbr_elements - old_count;  // modulo 2^32
            for (std::size_t i = std::size_t(ID) + 1; i < FE_offsets_.size(); ++i) FE_offsets_[i] += delta;
        } else {
            while (FE_offsets_.size() < std::size_t(ID) + 1) FE_offsets_.push_back(FE_offsets_.back());
            FE_offsets_.push_back(FE_offsets_.back() + nbr_elements);
        }
        model->assign_ID(ID);
        return ID;
    } catch (const std::bad_alloc&) {
        return no_ID;
    }
}

int numerical_models_mgr::remove(std::uint32_t ID) {
    Ptr<numerical_model_base> dropped;  // released after the lock
    {
        std::lock_guard<std::mutex> guard(lock_);
        if (ID >= models_.size() || !models_[ID]) return fem::error_data;
        try {
            free_IDs_.push_back(ID);
        } catch (const std::bad_alloc&) {
            return fem::error_memory;
        }
        dropped = models_[ID];
        models_[ID].reset();
        dropped->assign_ID(no_ID);  // detached: a later model may take the ID
    }
    return 0;
}

std::uint32_t numerical_models_mgr::global_FE_ID(std::uint32_t ID) const {
    if (std::size_t(ID) + 1 >= FE_offsets_.size()) return no_ID;
    return FE_offsets_[ID];
}

numerical_models_mgr::ID_pair numerical_models_mgr::global_FE_ID_range(std::uint32_t ID) const {
    if (std::size_t(ID) + 1 >= FE_offsets_.size()) return ID_pair(no_ID, no_ID);
    return ID_pair(FE_offsets_[ID], FE_offsets_[ID + 1]);
}

numerical_models_mgr::ID_pair numerical_models_mgr::local_FE_ID(std::uint32_t global) const {
    // The first offset above `global`; a model with no element has two equal offsets
    // and is passed over.
    auto it = std::upper_bound(FE_offsets_.begin(), FE_offsets_.end(), global);
    if (it == FE_offsets_.end() || it == FE_offsets_.begin()) return ID_pair(no_ID, no_ID);
    const std::size_t pos = static_cast<std::size_t>(it - FE_offsets_.begin());
    return ID_pair(static_cast<std::uint32_t>(pos - 1), global - FE_offsets_[pos - 1]);
}

void numerical_models_mgr::clear() {
    std::vector<Ptr<numerical_model_base>> dropped;  // released after the lock
    {
        std::lock_guard<std::mutex> guard(lock_);
        dropped.swap(models_);
        next_ID_ = 0;
        free_IDs_.clear();
        FE_offsets_.clear();
    }
}

}  // namespace core

namespace fem {

ORV_FEM_HANDLE_IMPL(numerical_models_mgr, base_class, core::numerical_models_mgr)

numerical_models_mgr::numerical_models_mgr() = default;

numerical_models_mgr::numerical_models_mgr(core::numerical_models_mgr* e) : base_class(static_cast<ref_counted*>(e)) {}

unsigned numerical_models_mgr::size() const { return engine() ? engine()->size() : 0u; }

unsigned numerical_models_mgr::get_ID(const numerical_model_base& model) const {
    return model.is_valid() ? model.ID() : 0xFFFFFFFFu;
}

numerical_model_base numerical_models_mgr::get_NM(unsigned ID) const {
    numerical_model_base h;
    if (!engine()) return h;
    if (core::numerical_model_base* m = engine()->get_NM(ID)) h.set_w(static_cast<ref_counted*>(m));
    return h;
}

error_type numerical_models_mgr::get_NM(unsigned ID, numerical_model_base& model) const {
    core::numerical_model_base* m = engine() ? engine()->get_NM(ID) : nullptr;
    if (!m) return error_data;
    model.set_w(static_cast<ref_counted*>(m));
    return no_error;
}

unsigned numerical_models_mgr::global_FE_ID(unsigned ID) const {
    return engine() ? engine()->global_FE_ID(ID) : 0xFFFFFFFFu;
}

std::pair<unsigned, unsigned> numerical_models_mgr::global_FE_ID_range(unsigned ID) const {
    return engine() ? engine()->global_FE_ID_range(ID) : std::pair<unsigned, unsigned>(0xFFFFFFFFu, 0xFFFFFFFFu);
}

std::pair<unsigned, unsigned> numerical_models_mgr::local_FE_ID(unsigned global) const {
    return engine() ? engine()->local_FE_ID(global) : std::pair<unsigned, unsigned>(0xFFFFFFFFu, 0xFFFFFFFFu);
}

error_type numerical_models_mgr::remove(unsigned ID) {
    return engine() ? static_cast<error_type>(engine()->remove(ID)) : error_data;
}

void numerical_models_mgr::clear() {
    if (engine()) engine()->clear();
}

numerical_models_mgr context::the_NM_mgr() const { return numerical_models_mgr(engine()->models()); }

}  // namespace fem
}  // namespace orv

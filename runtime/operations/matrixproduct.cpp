#include "operations.h"

#include <algorithm>

namespace scribo::cpu {

namespace {

/// `matrix` with axes of 1 in front until it has `rank` of them.
Shape padFront(Shape matrix, std::size_t rank)
{
    matrix.insert(matrix.begin(), rank - matrix.size(), 1);
    return matrix;
}

} // namespace

void addMatrixProduct(PlanBuilder& plan, const format::Operation&)
{
    Shape left = plan.shape(plan.input(0));
    Shape right = plan.shape(plan.input(1));
    if (left.size() == 1) {
        left.insert(left.begin(), 1);
    }
    if (right.size() == 1) {
        right.push_back(1);
    }
    const std::size_t rank = std::max(left.size(), right.size());
    left = padFront(left, rank);
    right = padFront(right, rank);
    Shape product(rank);
    for (std::size_t axis = 0; axis + 2 < rank; ++axis) {
        product[axis] = std::max(left[axis], right[axis]);
    }
    product[rank - 2] = left[rank - 2];
    product[rank - 1] = right[rank - 1];

    const Layout leftLayout = plainLayout(left);
    const Layout rightLayout = plainLayout(right);
    const Layout productLayout = plainLayout(product);
    const dnnl::matmul::desc kind(leftLayout, rightLayout, productLayout);
    const dnnl::matmul::primitive_desc description(kind, PlanBuilder::attributes(), plan.engine());
    const Operand first = plan.plainOperand(plan.input(0));
    const Operand second = plan.plainOperand(plan.input(1));
    const Operand result = plan.plainResult(plan.output(0));
    plan.addPrimitive(dnnl::matmul(description), description.scratchpad_desc(),
        {{DNNL_ARG_SRC, first.buffer, leftLayout}, {DNNL_ARG_WEIGHTS, second.buffer, rightLayout},
            {DNNL_ARG_DST, result.buffer, productLayout}});
}

} // namespace scribo::cpu

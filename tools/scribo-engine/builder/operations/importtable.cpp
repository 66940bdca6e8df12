#include "importtable.h"

#include "operations.h"

namespace scribo::builder {

const ImportTable& importTable()
{
    static const ImportTable table = [] {
        ImportTable all;
        for (auto* add : {addConvolutions, addPooling, addReductions, addRecurrent, addProducts, addActivations,
                 addElementwise, addNormalisation, addLayout, addSlicing, addResizing, addShapeArithmetic, addLogic}) {
            add(&all);
        }
        return all;
    }();
    return table;
}

} // namespace scribo::builder

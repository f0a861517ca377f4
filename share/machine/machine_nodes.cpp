#include "share/machine/machine_nodes.h"

CQVMBaseNode::~CQVMBaseNode() = default;
CQVMShape::~CQVMShape() = default;
CQVMToolNode::~CQVMToolNode() = default;

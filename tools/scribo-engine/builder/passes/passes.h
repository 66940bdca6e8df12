#pragma once

#include "networkedit.h"
#include "widthprofile.h"

/// The passes over a network between import and engine file. Each leaves a network that computes
/// the same, and says whether it changed anything.
namespace scribo::builder {

/// Works out every operation whose inputs are all constants.
bool foldConstants(NetworkT& network);

/// Turns shape arithmetic that gives the same at every width into constants, and computed targets
/// of Reshape into constant ones where at most one extent is open. `profile` is the network's.
bool foldShapes(NetworkT& network, const Profile& profile);

/// Removes operations that give what they get, and joins transposes that follow one another.
bool removeIdentities(NetworkT& network);

/// Moves a transpose that keeps the last axis in front of an operation that works on each row along it. There it can be
/// joined with another transpose.
bool hoistTransposes(NetworkT& network);

/// Folds scales and shifts per channel (batch normalisations, and products and sums with a constant
/// per channel) into the weights and bias of the convolution before them.
bool foldAffine(NetworkT& network);

/// Makes sums with a constant the bias of the fully connected layer before them.
bool fuseBias(NetworkT& network);

/// Makes constants of one element in elementwise operations plain numbers, without axes, where the other operand has at
/// least as many axes. `profile` is the network's.
bool simplifyScalars(NetworkT& network, const Profile& profile);

/// Recognises layer normalisations over the last axis that are written out as means, squares and a
/// root. `profile` is the network's.
bool composeLayerNormalisation(NetworkT& network, const Profile& profile);

/// Recognises activations that are written out: x * sigmoid(x), x * hardSigmoid(x), x * clip(x + 3, 0, 6).
bool composeActivations(NetworkT& network);

/// Lets activations do the sums and products with one number that follow them.
bool scaleActivations(NetworkT& network);

/// Lets convolutions and fully connected layers apply the activation that follows them.
bool fuseActivations(NetworkT& network);

/// Drops initial states of recurrent layers that are zero anyway.
bool dropZeroStates(NetworkT& network);

/// Removes operations and tensors that no output depends on.
bool removeDead(NetworkT& network);

} // namespace scribo::builder

/* Made by `./dev generate` from api/functions/material.toml; make changes there. */
#pragma once

#include "types.h"

/**
 * Makes a material node that holds a diffuse material without a colour.
 *
 * The node is the host's until it is added to a scene or given to a model.
 * @param name  the name of node and material, UTF-8.
 * @return the node.
 * @throws std::bad_alloc
 */
VELMAR_API VelmarMaterialNode* VelmarMaterial_CreateNode(const char* name);

/**
 * Makes a diffuse material, to be given to a node by VelmarMaterial_AddToNode.
 *
 * The material is the host's until it is given to a node.
 * @param name     the material's name, UTF-8. It becomes that of the node.
 * @param r, g, b  the reflected part of red, green and blue, 0 to 1, with gamma 2.2.
 * @return the material.
 * @throws std::bad_alloc
 */
VELMAR_API VelmarMaterial* VelmarMaterial_CreateDiffuse(const char* name, double r, double g, double b);

/**
 * Makes `material` the node's material. The one that it held is released: with no other holder it is destroyed.
 *
 * The material belongs to the node from then on and must not be deleted.
 * @param node      the node, which also takes the material's name.
 * @param material  the material; null leaves the node without one. A node without a material has no name and can't be
 *                  rendered.
 */
VELMAR_API void VelmarMaterial_AddToNode(VelmarMaterialNode* node, VelmarMaterial* material);

/**
 * Destroys a material node that was never added to a scene or given to a model, or a material that was never given to a
 * node.
 *
 * What was handed in is gone afterwards.
 * @param material  a VelmarMaterialNode or a VelmarMaterial, or null.
 */
VELMAR_API void VelmarMaterial_Delete(void* material);

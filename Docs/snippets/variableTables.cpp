#include "System/System/tableManager.h"

#include <cstdio>

namespace {

// Called for every change of the table it listens to.
void showChange(Qel::sMsgNotify const &change)
{
    std::printf("%s.%s = %s\n", change.table->GetName(), change.key.name,
                change.value->toString("(table)").c_str());
    ++*static_cast<int *>(change.user);
}

} // namespace

int main()
{
    Qel::cTableManager &manager = Qel::cTableManager::Instance();
    Qel::cVarTable &player = manager.Create("player");

    int changes = 0;
    manager.AddListener(&showChange, &changes, &player);
    player.Set("name", "Ada");
    player.Set("health", 80);
    player.Set("health", 80); // the same again: nobody is told
    player.CreateSubTable("pack").Set("rope", 2);
    manager.RemoveListener(&showChange, &changes);

    int const health = player.Get("health", 100);
    int const rope = player.Get("pack").toTable().Get("rope");
    int const arrows = player.Get("quiver").toTable().Get("arrows"); // no such table: 0
    player.Release();
    return changes == 3 && health == 80 && rope == 2 && arrows == 0 ? 0 : 1;
}
